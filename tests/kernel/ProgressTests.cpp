#include <chrono>
#include <cmath>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <kernel/BasicProgressReporter.h>
#include <kernel/Counted.h>
#include <kernel/Font.h>

using Kernel::BasicProgressReporter;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// A terminal in memory with a clock that is moved by hand.
class ProgressTest : public testing::Test
{
protected:
    Kernel::Counted<BasicProgressReporter> Make(bool isTerminal = true, int columns = 80)
    {
        BasicProgressReporter::Terminal terminal;
        terminal.write = [this](std::string_view text) { m_output += text; };
        terminal.now = [this] { return m_now; };
        terminal.isTerminal = isTerminal;
        terminal.columns = columns;
        return Kernel::MakeCounted<BasicProgressReporter>(terminal);
    }

    /// What was written since the last call.
    std::string Take() { return std::exchange(m_output, {}); }

    BasicProgressReporter::Clock::time_point m_now{};
    std::string m_output;
};

TEST_F(ProgressTest, NeitherShortWorkNorOtherFilesShowAnything)
{
    for (const bool isTerminal : {false, true}) {
        auto progress = Make(isTerminal);
        m_now += isTerminal ? 499ms : 10s;
        progress->SetProgress(0.9);
        progress.Reset();
        EXPECT_EQ(Take(), "");
    }
}

TEST_F(ProgressTest, BarIsDrawnNowAndThenAndCleared)
{
    auto progress = Make();
    progress->SetMessage("drawing");
    m_now += 500ms;
    progress->SetProgress(0.5);
    EXPECT_EQ(Take(), "\r\x1b[K[###############               ] 50% drawing");
    m_now += 99ms;
    progress->AddProgress(0.1);
    EXPECT_EQ(Take(), "");
    m_now += 1ms;
    progress->AddProgress(0.15);
    EXPECT_THAT(Take(), HasSubstr("] 75% drawing"));
    progress.Reset();
    EXPECT_EQ(Take(), "\r\x1b[K");
}

TEST_F(ProgressTest, LineNeverReachesTheLastColumn)
{
    auto progress = Make(true, 45);
    m_now += 1s;
    progress->SetMessage("\xc3\xa4\xc3\xb6\xc3\xbc\n\x7f\x1b[31m long text"); // two-byte letters
    const std::string line = Take();
    EXPECT_THAT(line, StartsWith("\r\x1b[K["));
    // 36 columns of bar and figure, then eight characters; control characters do not count.
    EXPECT_EQ(line.substr(4),
              "[" + std::string(30, ' ') + "] 0% " + "\xc3\xa4\xc3\xb6\xc3\xbc[31m ");
    progress = Make(true, 0);
    m_now += 1s;
    Take();
    progress->SetProgress(1.0);
    EXPECT_EQ(Take(), "\r\x1b[K");
}

TEST_F(ProgressTest, FractionIsClampedAndCancelIsSeen)
{
    const auto progress = Make();
    progress->SetProgress(7.0);
    EXPECT_EQ(progress->GetProgress(), 1.0);
    progress->AddProgress(-3.0);
    EXPECT_EQ(progress->GetProgress(), 0.0);
    progress->SetProgress(std::nan(""));
    EXPECT_EQ(progress->GetProgress(), 0.0);
    EXPECT_FALSE(progress->IsCancelled());
    progress->Cancel();
    EXPECT_TRUE(progress->IsCancelled());
}

TEST(Font, ClampsAndCompares)
{
    EXPECT_EQ(Kernel::Font("Sans", 400), Kernel::Font("Sans"));
    EXPECT_NE(Kernel::Font("Sans", 400, true), Kernel::Font("Sans", 400));
    EXPECT_NE(Kernel::Font("Sans", 400, false, 6), Kernel::Font("Sans", 400));
    EXPECT_EQ(Kernel::Font("Sans", 5000, false, -1), Kernel::Font("Sans", 1000, false, 1));
}

} // namespace
