#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include <kernel/Progress.h>

namespace Kernel {

/// Shows progress as a bar on one line of a terminal.
///
/// The line appears only when the operation takes longer than half a second, is redrawn at most ten
/// times a second, and is cleared at the end. Without a terminal nothing is written.
class KERNEL_EXPORT BasicProgressReporter : public Progress
{
public:
    using Clock = std::chrono::steady_clock;

    /// Where the bar is shown.
    struct Terminal
    {
        std::function<void(std::string_view)> write; ///< receives text and control sequences
        std::function<Clock::time_point()> now;      ///< the time
        bool isTerminal = false;                     ///< whether to show anything
        int columns = 80;                            ///< width of a line in characters
    };

    /// Shows on the standard error stream if that is a terminal.
    BasicProgressReporter();
    /// Shows on the given terminal.
    explicit BasicProgressReporter(Terminal terminal);
    /// Clears the line.
    ~BasicProgressReporter() override;

    /// Asks the operation to stop. May be called from any thread and from a signal handler.
    void Cancel() noexcept { m_cancelled.store(true, std::memory_order_relaxed); }
    bool IsCancelled() const override { return m_cancelled.load(std::memory_order_relaxed); }

protected:
    void Report(double fraction, const String& message) override;

private:
    std::string MakeLine(double fraction, std::string_view message) const;

    Terminal m_terminal;
    Clock::time_point m_nextDraw;
    bool m_shown = false;
    std::atomic<bool> m_cancelled{false};
};

} // namespace Kernel
