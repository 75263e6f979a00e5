#include "kit/channels/channels.h"

#include <cstdio>
#include <optional>
#include <random>

#include "kit/kit_environment.h"
#include "kit/slow_stream.h"
#include "kit/text/convert.h"
#include "platform/environment.h"
#include "platform/temp_files.h"
#include "support/environment.h"
#include "support/test_drives.h"

namespace ventrix {
namespace {

class Channels : public testing::Test {
  protected:
    static std::string Read(Q_Channel* channel, std::uint32_t count) {
        std::string text(count, '\0');
        text.resize(Q_ChannelRead(text.data(), 1, count, channel));
        return text;
    }

    test::TestDrives drives_;
};

TEST_F(Channels, ModeDecidesHowAFileIsOpened) {
    const struct {
        const char* mode;
        bool exists, opens;
        int access;
        const char* content;  // afterwards
        std::uint32_t position;
    } rows[] = {
        {"r", true, true, 1, "text", 0},   {"r", false, false, 0, "(missing)", 0},
        {"rb+", true, true, 1, "text", 0}, {"r+", true, true, 3, "text", 0},
        {"r+", false, true, 3, "", 0},     {"w", true, true, 2, "", 0},
        {"w", false, true, 2, "", 0},      {"w+b", true, true, 3, "", 0},
        {"a", true, true, 3, "text", 4},   {"a", false, true, 3, "", 0},
        {"a+", true, true, 3, "text", 4},  {"z", true, false, 0, "text", 0},
        {"", true, false, 0, "text", 0},   {nullptr, true, false, 0, "text", 0},
    };
    for (const auto& row : rows) {
        const std::string path = "C:\\file" + std::to_string(&row - rows);
        if (row.exists) {
            drives_.Write(path, "text");
        }
        Q_Channel* channel = OpenChannel(path, row.mode);
        ASSERT_EQ(channel != nullptr, row.opens) << path;
        EXPECT_EQ(drives_.Read(path), row.content) << path;
        if (channel != nullptr) {
            EXPECT_EQ(channel->access, row.access) << path;
            EXPECT_EQ(channel->path, path);
            EXPECT_EQ(Q_ChannelTell(channel), row.position) << path;
            EXPECT_EQ(Q_ChannelClose(&channel), 0);
            EXPECT_EQ(channel, nullptr);
        }
    }
    EXPECT_EQ(Q_ChannelOpen(nullptr, "r"), nullptr);
}

TEST_F(Channels, BufferReadsAndWritesInBlocks) {
    Q_Channel* channel = OpenChannel("C:\\a", "w+");
    const std::string text(600, 't');
    EXPECT_EQ(Q_ChannelWrite(text.data(), 1, 10, channel), 10u);
    EXPECT_EQ(Q_ChannelTell(channel), 10u);
    EXPECT_EQ(drives_.Read("C:\\a"), "");
    EXPECT_EQ(Q_ChannelWrite(text.data(), 1, 502, channel), 502u);
    EXPECT_EQ(channel->position, 0);
    EXPECT_EQ(drives_.Read("C:\\a").size(), 512u);
    EXPECT_EQ(Q_ChannelWrite(text.data(), 8, 11, channel), 11u);
    EXPECT_EQ(Q_ChannelSize(channel), 600u);
    EXPECT_EQ(Q_ChannelSeek(channel, 0, 0), 0);
    EXPECT_EQ(Read(channel, 600), text);
    EXPECT_EQ(Q_ChannelAtEnd(channel), 0u);
    EXPECT_EQ(Read(channel, 1), "");
    EXPECT_EQ(Q_ChannelAtEnd(channel), 1u);
    EXPECT_EQ(Q_ChannelSeek(channel, 0, 3), -1);
    EXPECT_EQ(Q_ChannelAtEnd(channel), 1u);
    EXPECT_EQ(Q_ChannelSeek(channel, 597, 0), 0);
    EXPECT_EQ(Q_ChannelAtEnd(channel), 0u);
    EXPECT_EQ(Q_ChannelPeek(channel), 't');
    EXPECT_EQ(Q_ChannelPeek(channel), 't');
    EXPECT_EQ(Q_ChannelTell(channel), 597u);
    char items[4] = "";
    EXPECT_EQ(Q_ChannelRead(items, 2, 2, channel), 1u) << "half an item does not count";
    EXPECT_EQ(Q_ChannelPeek(channel), -1);
    Q_ChannelClose(&channel);
}

TEST_F(Channels, RefuseOperationsThatTheirModeExcludes) {
    drives_.Write("C:\\a", "text");
    char byte = 'x';
    Q_Channel* reader = OpenChannel("C:\\a", "r");
    EXPECT_EQ(Q_ChannelWrite(&byte, 1, 1, reader), 0u);
    Q_Channel* writer = OpenChannel("C:\\b", "w");
    EXPECT_EQ(Q_ChannelRead(&byte, 1, 1, writer), 0u);
    EXPECT_EQ(Q_ChannelPeek(writer), -1);
    EXPECT_EQ(Q_ChannelCopy(writer, writer), 1);
    EXPECT_EQ(Q_ChannelCopy(reader, reader), 1);
    EXPECT_EQ(Q_ChannelRead(&byte, 0, 5, reader), 0u);
    EXPECT_EQ(Q_ChannelRead(&byte, 0x10000, 0x10000, reader), 0u);
    Q_ChannelClose(&reader);
    Q_ChannelClose(&writer);
    EXPECT_EQ(Q_ChannelClose(&writer), -1);
    EXPECT_EQ(Q_ChannelClose(nullptr), -1);
    EXPECT_EQ(Q_ChannelCloseAndDelete(&writer), -1);
    EXPECT_EQ(Q_ChannelRead(&byte, 1, 1, nullptr), 0u);
    EXPECT_EQ(Q_ChannelWrite(&byte, 1, 1, nullptr), 0u);
    EXPECT_EQ(Q_ChannelFlush(nullptr), 0);
    EXPECT_EQ(Q_ChannelPeek(nullptr), -1);
    EXPECT_EQ(Q_ChannelSize(nullptr), 0u);
    EXPECT_DEATH(Q_ChannelSeek(nullptr, 0, 0), "");
    EXPECT_DEATH(Q_ChannelTell(nullptr), "");
    EXPECT_DEATH(Q_ChannelCopy(nullptr, nullptr), "");
    EXPECT_DEATH(Q_ChannelAtEnd(nullptr), "");
}

TEST_F(Channels, CopyFromTheCurrentPositionToTheEnd) {
    const std::string text = "head" + std::string(3000, 'm') + "tail";
    drives_.Write("C:\\a", text);
    Q_Channel* source = OpenChannel("C:\\a", "r");
    Q_Channel* target = OpenChannel("C:\\b", "w");
    EXPECT_EQ(Read(source, 4), "head");
    EXPECT_EQ(Q_ChannelWrite("new ", 1, 4, target), 4u);
    EXPECT_EQ(Q_ChannelCopy(source, target), 0);
    EXPECT_EQ(Read(source, 1), "");
    EXPECT_EQ(Q_ChannelWrite("!", 1, 1, target), 1u);
    Q_ChannelClose(&source);
    Q_ChannelClose(&target);
    EXPECT_EQ(drives_.Read("C:\\b"), "new " + text.substr(4) + "!");
}

// A channel on a stream in memory. The channel owns the reference to the stream.
Q_Channel* ChannelOn(SlowStreamC* stream) {
    auto* channel = static_cast<Q_Channel*>(Q_Calloc(1, sizeof(Q_Channel), kMustSucceed));
    channel->path = Q_StrDup("memory");
    channel->stream = stream;
    channel->access = kChannelReadable | kChannelWritable;
    return channel;
}

TEST_F(Channels, ReportWhenTheStreamIsFull) {
    auto* stream = new SlowStreamC;
    stream->capacity = 100;
    stream->step = 7;
    Q_Channel* channel = ChannelOn(stream);
    const std::string text(1200, 'x');
    EXPECT_EQ(Q_ChannelWrite(text.data(), 1, 99, channel), 99u);
    EXPECT_EQ(Q_ChannelFlush(channel), 0);
    EXPECT_EQ(Q_ChannelWrite(text.data(), 1, 2, channel), 2u);
    EXPECT_EQ(Q_ChannelFlush(channel), 1);
    EXPECT_EQ(Q_ChannelFlush(channel), 0) << "unwritten bytes are lost";
    EXPECT_EQ(Q_ChannelWrite(text.data(), 1, 600, channel), 600u)
        << "a failure to write out a full buffer is not reported";
    EXPECT_EQ(Q_ChannelWrite(text.data(), 1, 1200, channel), 0u);
    Q_ChannelClose(&channel);
}

TEST_F(Channels, CopyWritesOutTheSourceFirst) {
    Q_Channel* source = OpenChannel("C:\\a", "w+");
    Q_Channel* target = OpenChannel("C:\\b", "w");
    EXPECT_EQ(Q_ChannelWrite("abc", 1, 3, source), 3u);
    EXPECT_EQ(Q_ChannelCopy(source, target), 0);
    EXPECT_EQ(Q_ChannelTell(source), 3u);
    EXPECT_EQ(drives_.Read("C:\\a"), "abc");
    Q_ChannelClose(&source);
    Q_ChannelClose(&target);
    EXPECT_EQ(drives_.Read("C:\\b"), "");
}

TEST_F(Channels, CopyInBlocksIfTheStreamHasNoCopyTo) {
    auto* from = new SlowStreamC;
    from->content = std::string(2000, 's');
    auto* to = new SlowStreamC;
    to->AddRef();
    Q_Channel* source = ChannelOn(from);
    Q_Channel* target = ChannelOn(to);
    EXPECT_EQ(Read(source, 10).size(), 10u);
    EXPECT_EQ(Q_ChannelCopy(source, target), 0);
    EXPECT_EQ(to->content, std::string(1990, 's'));
    from->position = 0;
    to->capacity = 2000;
    EXPECT_EQ(Q_ChannelCopy(source, target), 1);
    Q_ChannelClose(&source);
    Q_ChannelClose(&target);
    EXPECT_EQ(to->Release(), 0u);
}

TEST_F(Channels, PathsAreInTheCurrentEncoding) {
    drives_.Write("C:\\Übung.txt", "umlaut");
    const EncodingScope scope("QuorlRoman");
    Q_Channel* channel = OpenChannel("C:\\\206bung.txt", "r");
    ASSERT_NE(channel, nullptr);
    EXPECT_EQ(Read(channel, 9), "umlaut");
    Q_ChannelCloseAndDelete(&channel);
    EXPECT_FALSE(drives_.Exists("C:\\Übung.txt"));
}

TEST_F(Channels, TemporaryChannelHasANewFileUntilItIsDeleted) {
    Q_Channel* channel = Q_ChannelOpenTemp();
    ASSERT_NE(channel, nullptr);
    const std::string path = channel->path;
    EXPECT_EQ(path.find(platform::TempFolder() + "QLT"), 0u) << path;
    EXPECT_EQ(Q_ChannelWrite("text", 1, 4, channel), 4u);
    EXPECT_EQ(Q_ChannelSeek(channel, 0, 0), 0);
    EXPECT_EQ(Read(channel, 9), "text");
    EXPECT_TRUE(drives_.Exists(path));
    EXPECT_EQ(Q_ChannelCloseAndDelete(&channel), 0);
    EXPECT_EQ(channel, nullptr);
    EXPECT_FALSE(drives_.Exists(path));
}

/// Restores the setting of the temporary folder.
class TempFolderScope {
  public:
    ~TempFolderScope() {
        if (former_) {
            platform::SetEnvironmentValue(test::kTemporary, *former_);
        } else {
            test::RemoveVariable(test::kTemporary);
        }
    }

  private:
    std::optional<std::string> former_ = platform::EnvironmentValue(test::kTemporary);
};

TEST_F(Channels, TemporaryFolderMayHaveAnyNameThatTheEncodingHas) {
    const EncodingScope scope("QuorlRoman");
    const TempFolderScope restores;
    const std::pair<std::string, bool> rows[] = {{"C:\\t\xC3\xA4", true}, {"C:\\\xE4\xB8\xAD", false}};
    for (const auto& [folder, exists] : rows) {
        drives_.MakeFolder(folder);
        platform::SetEnvironmentValue(test::kTemporary, drives_.Native(folder).string());
        Q_Channel* channel = Q_ChannelOpenTemp();
        ASSERT_EQ(channel != nullptr, exists) << folder;
        EXPECT_EQ(drives_.Tree(folder).size(), exists ? 1U : 0U) << folder;
        if (exists) {
            const Q_String path(Q_CurrentToUtf8(channel->path));
            EXPECT_TRUE(std::string(path.get()).starts_with(folder)) << path.get();
            Q_ChannelCloseAndDelete(&channel);
            EXPECT_EQ(drives_.Tree(folder).size(), 0U);
        }
    }
}

TEST_F(Channels, DifferFromCStreamsAsDocumented) {
    drives_.Write("C:\\a", "0123456789");
    Q_Channel* channel = OpenChannel("C:\\a", "r+");
    EXPECT_EQ(Read(channel, 2), "01");
    // A seek within the buffer leaves the file's own position at the end.
    EXPECT_EQ(Q_ChannelSeek(channel, 0, 1), 0);
    EXPECT_EQ(Q_ChannelWrite("x", 1, 1, channel), 1u);
    Q_ChannelClose(&channel);
    EXPECT_EQ(drives_.Read("C:\\a"), "0123456789x");

    channel = OpenChannel("C:\\a", "a");
    Q_ChannelSeek(channel, 0, 0);
    EXPECT_EQ(Q_ChannelWrite("X", 1, 1, channel), 1u);
    Q_ChannelClose(&channel);
    EXPECT_EQ(drives_.Read("C:\\a"), "X123456789x");

    channel = OpenChannel("C:\\a", "r");
    EXPECT_EQ(Q_ChannelSeek(channel, -1, 0), 0);
    EXPECT_EQ(Q_ChannelTell(channel), 0u);
    Q_ChannelClose(&channel);
}

// As the mode of a C stream, which would otherwise write CR LF on Windows.
std::string BinaryMode(const char* mode) {
    const std::string text = mode;
    return text.find('b') == std::string::npos ? text + 'b' : text;
}

// Performs the same random operations on a channel and on a C stream, on two files with the same content.
class Pair {
  public:
    Pair(test::TestDrives& drives, std::mt19937& random, Q_Channel* channel, const char* mode)
        : random_(random),
          channel_(channel),
          stream_(std::fopen(drives.Native("C:\\theirs").string().c_str(), BinaryMode(mode).c_str())) {}
    ~Pair() {
        Q_ChannelClose(&channel_);
        std::fclose(stream_);
    }

    void Step() {
        static constexpr void (Pair::*kSteps[])() = {&Pair::ReadItems, &Pair::ReadItems, &Pair::WriteItems,
                                                     &Pair::Seek,      &Pair::Peek,      &Pair::Size};
        (this->*kSteps[random_() % 6])();
        ASSERT_EQ(Q_ChannelTell(channel_), static_cast<std::uint32_t>(std::ftell(stream_)));
        ASSERT_EQ(Q_ChannelAtEnd(channel_) != 0, std::feof(stream_) != 0);
    }

  private:
    // Both need a seek between reading and writing; channels need one from the start or the end.
    void TurnTo(bool writes) {
        if (writes != writes_) {
            const std::uint32_t position = Q_ChannelTell(channel_);
            Q_ChannelSeek(channel_, static_cast<std::int32_t>(position), 0);
            std::fseek(stream_, static_cast<long>(position), SEEK_SET);
        }
        writes_ = writes;
    }

    std::uint32_t Random(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }

    std::uint32_t Count() {
        constexpr std::uint32_t kBases[] = {0, 1, 500, 1000};
        return kBases[Random(4)] + Random(40);
    }

    void ReadItems() {
        TurnTo(false);
        const std::uint32_t size = 1 + Random(3);
        const std::uint32_t count = Count();
        std::vector<char> ours(size * count + 1);
        std::vector<char> theirs(size * count + 1);
        const std::uint32_t read = Q_ChannelRead(ours.data(), size, count, channel_);
        ASSERT_EQ(read, std::fread(theirs.data(), size, count, stream_));
        ASSERT_EQ(std::string(ours.data(), read * size), std::string(theirs.data(), read * size));
    }

    void WriteItems() {
        TurnTo(true);
        const std::uint32_t count = Count();
        const std::string text(count, static_cast<char>('a' + random_() % 26));
        ASSERT_EQ(Q_ChannelWrite(text.data(), 1, count, channel_),
                  std::fwrite(text.data(), 1, count, stream_));
    }

    void Seek() {
        const int origin = static_cast<int>(random_() % 3);
        std::fseek(stream_, 0, SEEK_CUR);
        const long position = std::ftell(stream_);
        const long base = origin == 0   ? 0
                          : origin == 1 ? position
                                        : static_cast<long>(Q_ChannelSize(channel_));
        const long target = static_cast<long>(random_() % 2600);
        ASSERT_EQ(Q_ChannelSeek(channel_, static_cast<std::int32_t>(target - base), origin), 0);
        ASSERT_EQ(std::fseek(stream_, target - base, origin), 0);
    }

    void Peek() {
        TurnTo(false);
        const int theirs = std::getc(stream_);
        ASSERT_EQ(Q_ChannelPeek(channel_), theirs);
        if (theirs != EOF) {
            std::ungetc(theirs, stream_);
        }
    }

    void Size() {
        TurnTo(true);
        std::fflush(stream_);
        const long position = std::ftell(stream_);
        std::fseek(stream_, 0, SEEK_END);
        ASSERT_EQ(Q_ChannelSize(channel_), static_cast<std::uint32_t>(std::ftell(stream_)));
        std::fseek(stream_, position, SEEK_SET);
        Q_ChannelSeek(channel_, static_cast<std::int32_t>(position), 0);
    }

    std::mt19937& random_;
    Q_Channel* channel_;
    std::FILE* stream_;
    bool writes_ = false;
};

TEST_F(Channels, RandomSequencesMatchStdio) {
    constexpr const char* kModes[] = {"r", "r+", "w", "w+"};
    std::mt19937 random(20);
    for (int sequence = 0; sequence < 3000; ++sequence) {
        std::string content(random() % 2000, '\0');
        for (char& byte : content) {
            byte = static_cast<char>(random());
        }
        drives_.Write("C:\\ours", content);
        drives_.Write("C:\\theirs", content);
        const char* mode = kModes[random() % 4];
        {
            Pair pair(drives_, random, OpenChannel("C:\\ours", mode), mode);
            for (auto left = 1 + random() % 15; left > 0; --left) {
                ASSERT_NO_FATAL_FAILURE(pair.Step()) << "sequence " << sequence << " in mode " << mode;
            }
        }
        ASSERT_EQ(drives_.Read("C:\\ours"), drives_.Read("C:\\theirs")) << sequence;
    }
}

}  // namespace
}  // namespace ventrix
