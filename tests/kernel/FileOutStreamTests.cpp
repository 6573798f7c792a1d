#include <filesystem>
#include <string>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <kernel/FileOutStream.h>
#include <support/TestFolder.h>

namespace fs = std::filesystem;
using Kernel::FileOutStream;
using WriteException = Kernel::OutStream::WriteException;

namespace {

class FileOutStreamTest : public testing::Test
{
protected:
    TestSupport::TestFolder m_folder;
};

TEST_F(FileOutStreamTest, FileAppearsCompleteOnClose)
{
    const fs::path path = m_folder.Write("picture", "before");
    std::string expected;
    {
        FileOutStream stream(path);
        for (const std::size_t size : {1U, 65535U, 65536U, 3U, 200000U, 0U}) { // around the buffer
            const std::string piece(size, static_cast<char>('a' + size % 26));
            stream.Write(piece);
            expected += piece;
        }
        EXPECT_EQ(m_folder.Read("picture"), "before");
        stream.Close();
        stream.Close();
        EXPECT_THROW(stream.Write("late"), WriteException);
    }
    EXPECT_EQ(m_folder.Read("picture"), expected);
    EXPECT_EQ(m_folder.CountFiles(), 1);
}

TEST_F(FileOutStreamTest, WithoutCloseNothingChanges)
{
    m_folder.Write("old", "before");
    for (const char* name : {"old", "new"}) {
        FileOutStream stream(m_folder / name);
        stream.Write(std::string(100000, 'x'));
    }
    EXPECT_EQ(m_folder.Read("old"), "before");
    EXPECT_EQ(m_folder.CountFiles(), 1);
}

TEST_F(FileOutStreamTest, PermissionsAndLinksOfTheTargetStay)
{
    const fs::path path = m_folder.Write("file", "before");
    fs::permissions(path, fs::perms(0646));
    fs::create_symlink("file", m_folder / "link");
    fs::create_symlink("fresh", m_folder / "dangling");
    for (const char* name : {"link", "dangling"}) {
        FileOutStream stream(m_folder / name);
        stream.Write("after");
        stream.Close();
        EXPECT_TRUE(fs::is_symlink(m_folder / name));
    }
    EXPECT_EQ(m_folder.Read("file"), "after");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0646));
    EXPECT_EQ(m_folder.Read("fresh"), "after");
}

TEST_F(FileOutStreamTest, LongestNameIsPossible)
{
    const std::string name(255, 'n');
    FileOutStream stream(m_folder / name);
    stream.Write("text");
    stream.Close();
    EXPECT_EQ(m_folder.Read(name), "text");
}

TEST_F(FileOutStreamTest, WhatCannotBeOpenedThrows)
{
    EXPECT_THROW(FileOutStream(m_folder / "missing" / "file"), WriteException);
    EXPECT_THROW(FileOutStream{m_folder.GetPath()}, WriteException);
    EXPECT_THROW(FileOutStream(m_folder / std::string(300, 'n')).Close(), WriteException);
    fs::create_symlink("loop", m_folder / "loop");
    EXPECT_THROW(FileOutStream(m_folder / "loop").Close(), WriteException);
    EXPECT_TRUE(fs::is_symlink(m_folder / "loop"));
    EXPECT_EQ(m_folder.CountFiles(), 1);
}

TEST_F(FileOutStreamTest, FullDeviceThrows)
{
    FileOutStream small("/dev/full");
    small.Write("text"); // only buffered
    EXPECT_THROW(small.Close(), WriteException);

    FileOutStream large("/dev/full");
    try {
        large.Write(std::string(100000, 'x'));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const WriteException& exception) {
        EXPECT_STREQ(exception.what(), "cannot write: No space left on device");
    }
    EXPECT_THROW(large.Close(), WriteException);
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(FileOutStreamTest, FailureMidwayRemovesThePartialFile)
{
    // A limit on the size of files stands for a disk that fills up.
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limited = {100000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    m_folder.Write("file", "before");
    FileOutStream stream(m_folder / "file");
    EXPECT_THROW(stream.Write(std::string(200000, 'x')), WriteException);
    EXPECT_EQ(m_folder.CountFiles(), 1); // gone already, not only with the stream
    EXPECT_THROW(stream.Close(), WriteException);
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(m_folder.Read("file"), "before");
}

TEST_F(FileOutStreamTest, OpenFilesOfTheProcessKeepTheirPosition)
{
    // What the shell does for "command /dev/stdout >> log".
    const fs::path path = m_folder.Write("log", "begin ");
    const int file = open(path.c_str(), O_WRONLY | O_APPEND);
    ASSERT_GE(file, 0);
    FileOutStream stream("/dev/fd/" + std::to_string(file));
    stream.Write("middle ");
    stream.Close();
    ASSERT_EQ(write(file, "end", 3), 3);
    close(file);
    EXPECT_EQ(m_folder.Read("log"), "begin middle end");
}

TEST_F(FileOutStreamTest, PipesAreWrittenDirectly)
{
    const fs::path path = m_folder / "pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    FileOutStream stream(path);
    stream.Write("text");
    stream.Close();
    char text[8] = {};
    EXPECT_EQ(read(reader, text, sizeof text), 4);
    EXPECT_STREQ(text, "text");
    close(reader);
    EXPECT_TRUE(fs::is_fifo(path));
}

} // namespace
