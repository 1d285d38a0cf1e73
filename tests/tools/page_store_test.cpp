#include "page_store.h"

#include <memory>

#include <gtest/gtest.h>

#include "console.h"
#include "tvrscan_fixture.h"

namespace tvrscn::cli {
namespace {

namespace fs = std::filesystem;
using test::readText;
using test::writeText;

constexpr const char* kWholeJpeg = "\xFF\xD8 picture \xFF\xD9";

class PageStoreTest : public test::TvrscanTest {
 protected:
  std::unique_ptr<PageStore> makeStore() {
    return std::make_unique<PageStore>(out(), NamePattern());
  }
  static std::string deliver(const PageStore& store, const std::string& name,
                             const std::string& content = kWholeJpeg) {
    writeText(store.deliveryFolder() / name, content);
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
