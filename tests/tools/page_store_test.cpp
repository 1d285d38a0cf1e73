#include "page_store.h"

#include <memory>
#include <string_view>

#include <gtest/gtest.h>

#include "console.h"
#include "image_check.h"
#include "tvrscan_fixture.h"

namespace tvrscn::cli {
namespace {

namespace fs = std::filesystem;
using test::readText;
using test::writeText;

constexpr std::string_view kWholeJpeg = "\xFF\xD8 picture \xFF\xD9";

// A directory at 8 with two entries, strip offsets and strip byte counts, and a strip of four bytes
// at 38.
constexpr std::string_view kWholeTiff(
    "II*\0\x08\0\0\0"
    "\x02\0"
    "\x11\x01\x04\0\x01\0\0\0\x26\0\0\0"
    "\x17\x01\x03\0\x01\0\0\0\x04\0\0\0"
    "\0\0\0\0"
    "data",
    42);

class PageStoreTest : public test::TvrscanTest {
 protected:
  std::unique_ptr<PageStore> makeStore() {
    return std::make_unique<PageStore>(out(), NamePattern());
  }
  static std::string deliver(const PageStore& store, const std::string& name,
                             std::string_view content = kWholeJpeg) {
    writeText(store.deliveryFolder() / name, std::string(content));
    return (store.deliveryFolder() / name).string();
  }
};

TEST_F(PageStoreTest, PagesGetTheNumbersBehindThoseInTheFolder) {
  fs::create_directories(out());
  writeText(out() / "Image_7.JPG", "mine");
  const auto store = makeStore();
  EXPECT_EQ(store->firstNumber(), 8);
  EXPECT_EQ(store->store(deliver(*store, "Image_1.JPG")).file, out() / "Image_8.jpg");
  EXPECT_EQ(store->store(deliver(*store, "Image_2.JPG")).number, 2);
  EXPECT_EQ(readText(out() / "Image_8.jpg"), kWholeJpeg);
  EXPECT_EQ(readText(out() / "Image_7.JPG"), "mine");
}

TEST_F(PageStoreTest, ANameThatIsTakenMeanwhileIsPassedOver) {
  const auto store = makeStore();
  writeText(out() / "Image_1.jpg", "mine");
  EXPECT_EQ(store->store(deliver(*store, "Image_1.JPG")).file, out() / "Image_2.jpg");
  EXPECT_EQ(readText(out() / "Image_1.jpg"), "mine");
}

TEST_F(PageStoreTest, TheFileNameOfANotificationIsEnough) {
  const auto store = makeStore();
  deliver(*store, "Image_1.JPG");
  EXPECT_EQ(store->store("?garbled\\folder\\Image_1.JPG").number, 1);
}

TEST_F(PageStoreTest, APageThatIsNotThereOrNotWholeIsRefused) {
  const auto store = makeStore();
  EXPECT_THROW(store->store((store->deliveryFolder() / "Image_1.JPG").string()), OutputError);
  for (const char* content : {"", "\xFF", "\xFF\xD8", "\xFF\xD8 cut", "no picture \xFF\xD9"}) {
    EXPECT_THROW(store->store(deliver(*store, "Image_2.JPG", content)), OutputError) << content;
  }
  EXPECT_TRUE(store->pages().empty());
}

TEST_F(PageStoreTest, AFileThatIsMissingIsNoFaultOfTheDevice) {
  const auto store = makeStore();
  const auto hadRoom = [&](const std::string& path) {
    try {
      store->store(path);
    } catch (const UnusablePage& failure) {
      return failure.hadRoom;
    }
    throw std::logic_error("it was stored");
  };
  EXPECT_FALSE(hadRoom("Image_1.JPG"));
  EXPECT_TRUE(hadRoom(deliver(*store, "Image_2.JPG", "no picture")));
}

TEST_F(PageStoreTest, APageKeepsTheFormatOfItsFile) {
  fs::create_directories(out());
  writeText(out() / "Image_3.TIF", "mine");
  const auto store = makeStore();
  EXPECT_EQ(store->store(deliver(*store, "Image_1.tif", kWholeTiff)).file, out() / "Image_4.tif");
  EXPECT_EQ(store->store(deliver(*store, "tempImage_2.TIF", kWholeTiff)).file,
            out() / "Image_5.tif");
  EXPECT_EQ(store->store(deliver(*store, "Image_3.JPG")).file, out() / "Image_6.jpg");
  EXPECT_THROW(store->store(deliver(*store, "Image_4.JPG", kWholeTiff)), OutputError);
  EXPECT_THROW(store->store(deliver(*store, "Image_5.tif", kWholeJpeg)), OutputError);
  EXPECT_THROW(store->store(deliver(*store, "ScanRequestError.txt", "{}")), OutputError);
}

// Wherever the file ends before its last byte, something of it is missing; and a changed byte may
// send the reader anywhere.
TEST_F(PageStoreTest, ATiffThatIsCutIsNotWhole) {
  const auto store = makeStore();
  const fs::path file = store->deliveryFolder() / "page.tif";
  for (std::size_t length = 0; length < kWholeTiff.size(); ++length) {
    writeText(file, std::string(kWholeTiff.substr(0, length)));
    EXPECT_FALSE(isWholeTiff(file)) << length;
  }
  std::string longStrip(kWholeTiff);
  longStrip[30] = 5;  // of the byte count
  writeText(file, longStrip);
  EXPECT_FALSE(isWholeTiff(file));
  for (std::size_t at = 0; at < kWholeTiff.size(); ++at) {
    std::string changed(kWholeTiff);
    changed[at] = '\xFF';
    writeText(file, changed);
    isWholeTiff(file);
  }
  writeText(file, std::string(kWholeTiff));
  EXPECT_TRUE(isWholeTiff(file));
}

TEST_F(PageStoreTest, ANarrowDriverDeliversElsewhereOnlyWhereItHasTo) {
  const auto plain = makeStore();
  const fs::path before = plain->deliveryFolder();
  plain->deliverInAscii(temporary());
  EXPECT_EQ(plain->deliveryFolder(), before);

  const fs::path folder = out() / "Gr\xC3\xBC\xC3\x9F";
  PageStore store(folder, NamePattern());
  store.deliverInAscii(temporary());
  EXPECT_EQ(store.deliveryFolder(), temporary() / "pages");
  EXPECT_EQ(store.store(deliver(store, "Image_1.JPG")).file, folder / "Image_1.jpg");
  EXPECT_EQ(readText(folder / "Image_1.jpg"), kWholeJpeg);
  store.cleanUp();
  EXPECT_EQ(names(folder), std::vector<std::string>{"Image_1.jpg"});
  EXPECT_TRUE(fs::is_empty(temporary()));

  PageStore hopeless(folder, NamePattern());
  EXPECT_THROW(hopeless.deliverInAscii(folder), OutputError);
}

TEST_F(PageStoreTest, AFolderNameThatIsNoTextIsRefused) {
  const PageStore good(out() / "Gr\xC3\xBC\xC3\x9F", NamePattern());
  EXPECT_NE(good.wideDeliveryFolder().find(L"Gr\u00FC\u00DF"), std::wstring::npos);
  const PageStore bad(out() / "Gr\xFC\xDF", NamePattern());
  EXPECT_THROW(bad.wideDeliveryFolder(), OutputError);
}

TEST_F(PageStoreTest, TheDeliveryFolderIsGoneAtTheEnd) {
  {
    const auto store = makeStore();
    deliver(*store, "leftover");
  }
  EXPECT_TRUE(fs::is_empty(out()));
}

TEST(Console, NumbersAreReadable) {
  EXPECT_EQ(byteText(1), "1 byte");
  EXPECT_EQ(byteText(12 * 1024 + 1), "12 KiB");
  EXPECT_EQ(byteText(1024 * 1024 * 3 / 2), "1.5 MiB");
  EXPECT_EQ(timeText(std::chrono::milliseconds(850)), "0.8 s");
  EXPECT_EQ(timeText(std::chrono::seconds(125)), "2 min 5 s");
  EXPECT_EQ(pageText(1), "1 page");
  EXPECT_EQ(pageText(0), "0 pages");
}

}  // namespace
}  // namespace tvrscn::cli
