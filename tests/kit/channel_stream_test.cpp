#include "kit/channels/channel_stream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "kit/channels/channel_stream.h"
#include "kit/slow_stream.h"
#include "support/test_drives.h"

namespace ventrix {
namespace {

class ChannelStream : public testing::Test {
  protected:
    ~ChannelStream() override { EXPECT_EQ(stream_->Release(), 0u); }

    // Replaces the stream by a new one and opens the file with it.
    int Open(const char* path, int mode, bool truncate) {
        stream_->Release();
        stream_ = new ChannelStreamC;
        return stream_->OpenFile(path, mode, truncate);
    }

    ULONG SeekTo(std::int32_t offset, DWORD origin) {
        LARGE_INTEGER move{};
        move.QuadPart = offset;
        ULARGE_INTEGER position{};
        stream_->Seek(move, origin, &position);
        EXPECT_EQ(position.u.HighPart, 0u);
        return position.u.LowPart;
    }

    test::TestDrives drives_;
    ChannelStreamC* stream_ = new ChannelStreamC;
};

// Channels.ModeDecidesHowAFileIsOpened covers the valid modes.
TEST_F(ChannelStream, RefusesInvalidModesAndPathsWithoutChangingFiles) {
    drives_.Write("C:\\a", "text");
    for (const int mode : {-1, 3}) {
        EXPECT_EQ(Open("C:\\a", mode, true), 0) << mode;
        EXPECT_EQ(Open("C:\\none", mode, true), 0) << mode;
    }
    EXPECT_EQ(SeekTo(0, STREAM_SEEK_CUR), 0x80004005u);
    EXPECT_EQ(drives_.Read("C:\\a"), "text");
    EXPECT_FALSE(drives_.Exists("C:\\none"));
    EXPECT_EQ(Open("C:\\", 0, false), 0);
    EXPECT_EQ(Open(nullptr, 0, false), 0);
}

TEST_F(ChannelStream, PathsHaveALimitedLength) {
    drives_.Write("C:\\aa", "text");
    std::string path = "C:";
    while (path.size() < 4090) {
        path += "\\.";
    }
    EXPECT_EQ(Open((path + "\\aa").c_str(), 0, false), 1);
    EXPECT_EQ(Open((path + "\\.\\aa").c_str(), 0, false), 0);
}

TEST_F(ChannelStream, OpensOneFileOnly) {
    drives_.Write("C:\\a", "a");
    ASSERT_EQ(Open("C:\\a", 0, false), 1);
    EXPECT_EQ(stream_->OpenFile("C:\\a", 0, false), 0);
}

TEST_F(ChannelStream, ReadsWritesAndMoves) {
    ASSERT_EQ(Open("C:\\a", 2, true), 1);
    ULONG moved = 0;
    EXPECT_EQ(stream_->Write("0123456789", 10, &moved), S_OK);
    EXPECT_EQ(moved, 10u);
    EXPECT_EQ(SeekTo(-3, STREAM_SEEK_END), 7u);
    char bytes[8] = "";
    EXPECT_EQ(stream_->Read(bytes, 3, nullptr), S_OK);
    EXPECT_STREQ(bytes, "789");
    EXPECT_EQ(stream_->Read(bytes, 3, &moved), S_FALSE);
    EXPECT_EQ(moved, 0u);
    EXPECT_EQ(SeekTo(0, STREAM_SEEK_END), 10u);
    EXPECT_EQ(SeekTo(-4, STREAM_SEEK_CUR), 6u);
    EXPECT_EQ(SeekTo(-1, STREAM_SEEK_SET), 0x80004005u);
    EXPECT_EQ(SeekTo(0, 3), 0x80004005u);
    EXPECT_EQ(SeekTo(0, STREAM_SEEK_CUR), 6u);
    EXPECT_EQ(stream_->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr), S_OK);

    STATSTG record;
    std::memset(&record, 0xFF, sizeof record);
    EXPECT_EQ(stream_->Stat(&record, 0), S_OK);
    EXPECT_EQ(record.pwcsName, nullptr);
    EXPECT_EQ(record.type, 2u);
    EXPECT_EQ(record.cbSize.QuadPart, 10u);

    ASSERT_EQ(Open("C:\\a", 0, false), 1);
    EXPECT_EQ(stream_->Write("x", 1, &moved), E_FAIL);
    EXPECT_EQ(moved, 0u);
}

TEST_F(ChannelStream, InterfacesShareOneReferenceCount) {
    void* stream = nullptr;
    EXPECT_EQ(stream_->QueryInterface(IID_IStream, &stream), S_OK);
    EXPECT_EQ(stream, static_cast<IStream*>(stream_));
    void* unknown = nullptr;
    EXPECT_EQ(static_cast<IStream*>(stream)->QueryInterface(IID_IUnknown, &unknown), S_OK);
    EXPECT_EQ(unknown, static_cast<IUnknown*>(static_cast<ComUltraliteC*>(stream_)));
    EXPECT_EQ(static_cast<IStream*>(stream)->AddRef(), 4u);
    EXPECT_EQ(stream_->Release(), 3u);
    EXPECT_EQ(static_cast<IUnknown*>(unknown)->Release(), 2u);
    EXPECT_EQ(static_cast<IStream*>(stream)->Release(), 1u);
    void* filter = &stream;
    EXPECT_EQ(stream_->QueryInterface(IID_IMessageFilter, &filter), E_NOINTERFACE);
    EXPECT_EQ(filter, nullptr);
}

TEST_F(ChannelStream, OpensTheAliasOfItsPath) {
    drives_.Write("C:\\real.txt", "real");
    Q_SetPathAlias("C:\\name.txt", "C:\\real.txt");
    EXPECT_STREQ(Q_PathAlias("C:\\name.txt"), "C:\\real.txt");
    EXPECT_STREQ(Q_PathAlias("c:\\name.txt"), "c:\\name.txt");
    EXPECT_EQ(Open("C:\\name.txt", 0, false), 1);
    Q_SetPathAlias("C:\\name.txt", nullptr);
    EXPECT_EQ(Open("C:\\name.txt", 0, false), 0);
    EXPECT_EQ(Q_PathAlias(nullptr), nullptr);
}

TEST_F(ChannelStream, CopyToReportsWhatTheTargetTook) {
    drives_.Write("C:\\a", std::string(1500, 'a') + "end");
    ASSERT_EQ(Open("C:\\a", 0, false), 1);
    auto* target = new SlowStreamC;
    ULARGE_INTEGER count{};
    count.QuadPart = 0xFFFFFFFF;
    ULARGE_INTEGER read{};
    ULARGE_INTEGER written{};
    EXPECT_EQ(stream_->CopyTo(target, count, &read, &written), S_OK);
    EXPECT_EQ(read.QuadPart, 1503u);
    EXPECT_EQ(written.QuadPart, 1503u);
    EXPECT_EQ(target->content, drives_.Read("C:\\a"));
    target->capacity = 2000;
    SeekTo(0, STREAM_SEEK_SET);
    EXPECT_EQ(stream_->CopyTo(target, count, &read, &written), E_FAIL);
    EXPECT_EQ(read.QuadPart, 1024u);
    EXPECT_EQ(written.QuadPart, 497u);
    EXPECT_EQ(stream_->CopyTo(target, count, nullptr, nullptr), E_FAIL);
    target->Release();
}

TEST(StreamLoops, MoveAllInSeveralCalls) {
    auto* stream = new SlowStreamC;
    stream->step = 10;
    const std::string text(95, 't');
    EXPECT_EQ(Q_StreamWriteAll(stream, text.data(), 95), 95u);
    EXPECT_EQ(stream->content, text);
    char buffer[200];
    EXPECT_EQ(Q_StreamReadAll(stream, buffer, sizeof buffer), 95u);
    EXPECT_EQ(stream->asked.size(), 11u);  // ten calls that read bytes and one that reads none
    EXPECT_EQ(Q_StreamReadAll(stream, buffer, 0), 0u);
    EXPECT_EQ(stream->asked.size(), 11u);
    stream->capacity = 100;
    EXPECT_EQ(Q_StreamWriteAll(stream, text.data(), 95), 5u);
    stream->Release();
}

TEST(StreamLoops, CopyBlocksUpToTheCount) {
    auto* source = new SlowStreamC;
    auto* target = new SlowStreamC;
    source->content = std::string(3000, 's');
    std::uint32_t read = 9;
    std::uint32_t written = 9;
    EXPECT_EQ(Q_StreamCopyBlocks(0, source, &read, target, &written), 1);
    EXPECT_EQ(read + written, 0u);
    EXPECT_EQ(Q_StreamCopyBlocks(1500, source, &read, target, &written), 1);
    EXPECT_EQ(source->asked, (std::vector<ULONG>{1024, 476}));
    EXPECT_EQ(target->content.size(), 1500u);
    source->Release();
    target->Release();
}

}  // namespace
}  // namespace ventrix
