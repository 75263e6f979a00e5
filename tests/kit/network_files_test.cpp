#include "kit/channels/network_files.h"

#include "kit/channels/channels.h"
#include "kit/kit_environment.h"
#include "kit/paths/file_path.h"
#include "kit/paths/relative_path.h"
#include "kit/paths/resolve_path.h"
#include "kit/paths/rivlet.h"
#include "platform/library.h"
#include "support/test_drives.h"

namespace ventrix {
namespace {

// Uses the library of rivlet_library.cpp, with a server and a cache in empty folders.
class NetworkFiles : public testing::Test {
  protected:
    NetworkFiles() : library_(platform::OpenLibrary(VENTRIX_TEST_RIVLET)) {
        drives_.MakeFolder("C:\\server");
        drives_.MakeFolder("C:\\cache");
        Serve(true);
        Q_BindRivlet(library_);
    }
    ~NetworkFiles() override {
        EXPECT_EQ(platform::FindFunction<int()>(library_, "RivletOpenTexts")(), 0)
            << "strings of the library leak";
        Q_BindRivlet(nullptr);
    }

    void Serve(bool isThere) {
        auto* serve = platform::FindFunction<void(const char*, const char*)>(library_, "RivletServe");
        const std::string server = drives_.Native("C:\\server").string();
        serve(isThere ? server.c_str() : nullptr, cache().c_str());
    }

    std::string cache() const { return drives_.Native("C:\\cache").string(); }

    std::string ReadAll(const char* url) {
        Q_Channel* channel = OpenChannel(url, "r");
        if (channel == nullptr) {
            return "(cannot open)";
        }
        char text[100] = "";
        Q_ChannelRead(text, 1, sizeof text - 1, channel);
        Q_ChannelClose(&channel);
        return text;
    }

    test::TestDrives drives_;
    platform::LibraryHandle library_;
};

TEST_F(NetworkFiles, AreReadFromTheServerOrTheCache) {
    drives_.Write("C:\\server\\a.txt", "from the server");
    EXPECT_EQ(ReadAll("net://a.txt"), "from the server");
    Serve(false);
    EXPECT_EQ(ReadAll("net://a.txt"), "from the server");  // from the cache
    EXPECT_EQ(ReadAll("net://b.txt"), "(cannot open)");
}

TEST_F(NetworkFiles, AreSentBackWhenAWritableChannelCloses) {
    drives_.Write("C:\\server\\a.txt", "old text");
    Q_Channel* channel = OpenChannel("net://a.txt", "r+");
    ASSERT_NE(channel, nullptr);
    EXPECT_EQ(Q_ChannelWrite("new", 1, 3, channel), 3u);
    EXPECT_EQ(drives_.Read("C:\\server\\a.txt"), "old text");
    EXPECT_EQ(Q_ChannelClose(&channel), 0);
    EXPECT_EQ(drives_.Read("C:\\server\\a.txt"), "new text");

    drives_.Write("C:\\server\\a.txt", "changed meanwhile");
    channel = OpenChannel("net://a.txt", "r");
    drives_.Write("C:\\server\\a.txt", "changed again");
    Q_ChannelClose(&channel);
    EXPECT_EQ(drives_.Read("C:\\server\\a.txt"), "changed again") << "a read-only channel sends nothing back";
}

TEST_F(NetworkFiles, NewFilesAreWrittenThroughTheCache) {
    Q_Channel* channel = OpenChannel("net://new.txt", "w");
    ASSERT_NE(channel, nullptr);
    Q_ChannelWrite("hello", 1, 5, channel);
    Q_ChannelClose(&channel);
    EXPECT_EQ(drives_.Read("C:\\cache\\new.txt"), "hello");
    EXPECT_EQ(drives_.Read("C:\\server\\new.txt"), "hello");
    EXPECT_EQ(OpenChannel("net://no/folder.txt", "w"), nullptr);
}

TEST_F(NetworkFiles, OperationsReachTheLibrary) {
    drives_.Write("C:\\server\\a.txt", "a");
    drives_.Write("C:\\local.txt", "local");
    drives_.Write("C:\\folder\\b.txt", "b");
    const std::string local = drives_.Native("C:\\local.txt").string();
    char* text = nullptr;
    std::int32_t error = -1;
    EXPECT_EQ(Q_CachedPathOf("net://a.txt", &text), 1);
    EXPECT_EQ(Q_FetchNetFile("net://a.txt", kFetchToRead, &text, &error), 0);
    EXPECT_EQ(Take(text), cache() + "/a.txt");
    EXPECT_EQ(Q_CachedPathOf("net://a.txt", &text), 0);
    EXPECT_EQ(Take(text), cache() + "/a.txt");
    EXPECT_EQ(Q_UrlOfCachedFile((cache() + "/a.txt").c_str(), &text), 0);
    EXPECT_EQ(Take(text), "net://a.txt");
    EXPECT_EQ(Q_CachePathFor("net://later.txt", &text), 0);
    EXPECT_EQ(Take(text), cache() + "/later.txt");
    EXPECT_EQ(Q_CleanUrl("net://a/../b", &text), 0);
    EXPECT_EQ(Take(text), "net://b");
    EXPECT_EQ(Q_PutNetFile("net://put.txt", local.c_str(), &error), 0);
    EXPECT_EQ(drives_.Read("C:\\server\\put.txt"), "local");
    EXPECT_EQ(Q_UploadNetFolder("net://up", drives_.Native("C:\\folder").string().c_str(), &error), 0);
    EXPECT_EQ(drives_.Read("C:\\server\\up\\b.txt"), "b");
    EXPECT_EQ(Q_StatNetFile("net://put.txt", kFetchToRead, &error), 0);
    EXPECT_EQ(error, -1) << "success stores no error";
}

TEST_F(NetworkFiles, FailuresStoreTheLibrarysErrorNumber) {
    char* text = nullptr;
    std::int32_t error = -1;
    EXPECT_EQ(Q_FetchNetFile("net://none.txt", kFetchToRead, &text, &error), 5);
    EXPECT_EQ(error, 3);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(Q_StatNetFile("net://none.txt", kFetchToRead, &error), 5);
    EXPECT_EQ(error, 21) << "20 is not an error number of the library";
    Serve(false);
    EXPECT_EQ(Q_SaveNetFile("net://none.txt", &error), 5);
    EXPECT_EQ(error, 21);
    EXPECT_EQ(Q_FetchNetFile("net://none.txt", kFetchToWrite, &text, nullptr), 5);
    EXPECT_EQ(Q_UploadNetFolder("net://up", "C:\\none", &error), 5);
    EXPECT_EQ(error, 19) << "the library's last error number";
    EXPECT_DEATH(Q_CleanUrl("net://a", nullptr), "");
}

TEST_F(NetworkFiles, OperationsRefuseOtherPaths) {
    char* text = nullptr;
    for (const char* url : {static_cast<const char*>(nullptr), "C:\\a.txt", "http://host/a"}) {
        EXPECT_EQ(Q_FetchNetFile(url, kFetchToRead, &text, nullptr), 1);
        EXPECT_EQ(Q_CachedPathOf(url, &text), 1);
        EXPECT_EQ(Q_CachePathFor(url, &text), 1);
        EXPECT_EQ(Q_CleanUrl(url, &text), 1);
        EXPECT_EQ(Q_SaveNetFile(url, nullptr), 1);
        EXPECT_EQ(Q_PutNetFile(url, "a", nullptr), 1);
        EXPECT_EQ(Q_UploadNetFolder(url, "a", nullptr), 1);
        EXPECT_EQ(Q_StatNetFile(url, kFetchToRead, nullptr), 1);
        EXPECT_EQ(Q_AbsoluteUrl(url, "a", &text), 1);
        EXPECT_EQ(Q_RelativeUrl(url, "net://a", &text), 1);
        EXPECT_EQ(Q_RelativeUrl("net://a", url, &text), 1);
    }
    EXPECT_EQ(Q_UrlOfCachedFile(nullptr, &text), 1);
}

TEST_F(NetworkFiles, AreJoinedAndRelatedAsUrls) {
    EXPECT_EQ(JoinPath("net://host/a", "b\\c.xml"), "net://host/a/b/c.xml");
    EXPECT_EQ(JoinPath("net://host/a", "net://other/b"), "net://other/b");
    EXPECT_EQ(JoinPath("net://host/a", "C:\\b"), "C:\\b");
    EXPECT_EQ(JoinPath("net://host/a", "no?"), "");
    EXPECT_EQ(JoinPath("net://host/a", std::string(4090, 'x')), "");  // a URL is never cut
    EXPECT_EQ(RelativeTo("net://host/a/b%20c/d.xml", "net://host/a/x/y.xml"), "..\\b c\\d.xml");
    EXPECT_EQ(RelativeTo("net://other/d.xml", "net://host/y.xml"), "net://other/d.xml");
    EXPECT_EQ(RelativeTo("net://host/d.xml", "C:\\y.xml"), "net://host/d.xml");
}

TEST_F(NetworkFiles, SuccessWithoutAStringIsAFailure) {
    drives_.Write("C:\\cache\\null.txt", "from the cache");
    char* text = nullptr;
    std::int32_t error = -1;
    EXPECT_EQ(Q_FetchNetFile("net://null-new.txt", kFetchToRead, &text, &error), 1);
    EXPECT_NE(error, -1);
    EXPECT_EQ(Q_CleanUrl("net://null.txt", &text), 1);
    EXPECT_EQ(Q_AbsoluteUrl("net://host/", "null.txt", &text), 1);
    EXPECT_EQ(ReadAll("net://null.txt"), "from the cache");
    EXPECT_EQ(ReadAll("net://null-new.txt"), "(cannot open)");
    Q_Channel* channel = OpenChannel("net://null-new.txt", "w");
    ASSERT_NE(channel, nullptr);
    Q_ChannelClose(&channel);
    EXPECT_TRUE(drives_.Exists("C:\\cache\\null-new.txt"));
    EXPECT_EQ(RelativeTo("net://host/null.txt", "net://host/y.xml"), "net://host/null.txt");
    EXPECT_EQ(JoinPath("net://host/", "null.txt"), "");
}

TEST(NetworkFilesWithoutLibrary, EveryTransferFails) {
    Q_BindRivlet(nullptr);
    char* text = nullptr;
    std::int32_t error = 0;
    EXPECT_TRUE(Q_IsNetFile("http://host/a"));
    EXPECT_EQ(Q_FetchNetFile("http://host/a", kFetchToRead, &text, &error), 1);
    EXPECT_EQ(error, 21);
    EXPECT_EQ(Q_SaveNetFile("http://host/a", &error), 1);
    EXPECT_EQ(Q_UrlOfCachedFile("C:\\a", &text), 1);
    EXPECT_EQ(Q_AbsoluteUrl("http://host/", "a", &text), 1);
    EXPECT_EQ(OpenChannel("http://host/a", "r"), nullptr);
    EXPECT_EQ(OpenChannel("http://host/a", "w"), nullptr);
}

}  // namespace
}  // namespace ventrix
