#include "virtual/windows/pipe_endpoint.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>

#include "virtual/windows/system_text.h"

namespace tvrscn::virtual_device {
namespace {

// Handles that can be opened while the device is busy; an open that finds none fails at once.
constexpr int kSpareChannels = 8;
// One wait takes so many events; two of them are not channels.
constexpr std::size_t kMostChannels = MAXIMUM_WAIT_OBJECTS - 2;

// Not every system refuses to add an instance to the pipe of another program.
void checkIsFree(const std::wstring& name) {
  if (!pipeExists(name)) return;
  throw std::runtime_error("cannot listen at " + narrow(name) +
                           ": another program listens there; give another name or end it");
}

}  // namespace

PipeEndpoint::PipeEndpoint(const std::wstring& name)
    : name_(name), stop_(CreateEventW(nullptr, 1, 0, nullptr)) {
  if (!stop_.isValid()) throw std::runtime_error("cannot make an event: " + reason(GetLastError()));
  checkIsFree(name);
  channels_.push_back(std::make_unique<PipeChannel>(name, true));
  tidy();
}

bool PipeEndpoint::isUsable(const PipeChannel& channel) {
  return channel.partner != nullptr && !channel.isBroken() && !channel.partner->isBroken();
}

bool PipeEndpoint::waitForHost() {
  for (;;) {
    tidy();
    for (const auto& channel : channels_) {
      if (isUsable(*channel)) {
        host_ = channel->process();
        return true;
      }
    }
    if (!wait()) return false;
  }
}

bool PipeEndpoint::hostIsHere() const {
  return std::any_of(channels_.begin(), channels_.end(), [this](const auto& channel) {
    return channel->process() == host_ && isUsable(*channel);
  });
}

void PipeEndpoint::dropHost() {
  // A handle that has no partner yet belongs to the next host.
  std::erase_if(channels_, [this](const auto& channel) {
    return channel->partner != nullptr && channel->process() == host_;
  });
  host_.reset();
}

PipeChannel* PipeEndpoint::request() {
  for (const auto& channel : channels_) {
    if (channel->process() == host_ && isUsable(*channel) && channel->hasRequest()) {
      return channel.get();
    }
  }
  return nullptr;
}

void PipeEndpoint::tidy() {
  // One handle alone is of no use to a host.
  for (const auto& channel : channels_) {
    if (channel->isBroken() && channel->partner != nullptr) channel->partner->giveUp();
  }
  std::erase_if(channels_, [](const auto& channel) { return channel->isBroken(); });
  auto spare = std::count_if(channels_.begin(), channels_.end(),
                             [](const auto& channel) { return channel->isListening(); });
  for (; spare < kSpareChannels && channels_.size() < kMostChannels; ++spare)
    channels_.push_back(std::make_unique<PipeChannel>(name_, false));
}

bool PipeEndpoint::wait(DWORD milliseconds, HANDLE event) {
  std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> events{stop_.get()};
  DWORD count = 1;
  if (event != nullptr) events.at(count++) = event;
  for (const auto& channel : channels_) {
    if (!channel->isSilent()) events.at(count++) = channel->event();
  }
  const DWORD result = WaitForMultipleObjects(count, events.data(), 0, milliseconds);
  if (result == WAIT_OBJECT_0 || result == WAIT_FAILED) return false;
  noteEvents();
  pairUp();
  return true;
}

// All that has happened, not just the first: a host that writes without end keeps nobody waiting.
// Hosts get the channels in their order. When one is found taken, those before it are taken too,
// though they were not yet when the loop came by; so it runs again until it finds no more.
void PipeEndpoint::noteEvents() {
  bool isComplete = false;
  while (!isComplete) {
    isComplete = true;
    for (const auto& channel : channels_) {
      if (channel->isSilent() || !channel->hasEvent()) continue;
      if (channel->isListening()) isComplete = false;
      channel->onEvent();
    }
  }
}

// Two handles that a process opened one after the other belong together.
void PipeEndpoint::pairUp() {
  const auto isSingle = [](const auto& channel) {
    return !channel->isListening() && !channel->isBroken() && channel->partner == nullptr;
  };
  for (auto first = channels_.begin(); first != channels_.end(); ++first) {
    if (!isSingle(*first)) continue;
    const auto second = std::find_if(first + 1, channels_.end(), [&](const auto& channel) {
      return isSingle(channel) && channel->process() == (*first)->process();
    });
    if (second == channels_.end()) continue;
    (*first)->partner = second->get();
    (*second)->partner = first->get();
  }
}

}  // namespace tvrscn::virtual_device
