#include <kernel/BasicProgressReporter.h>

#include <algorithm>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

#include <kernel/Format.h>

namespace Kernel {
namespace {

using namespace std::chrono_literals;

constexpr auto FirstDraw = 500ms;
constexpr auto DrawInterval = 100ms;
constexpr std::size_t BarLength = 30;
constexpr std::string_view ClearLine = "\r\x1b[K";

BasicProgressReporter::Terminal MakeStandardTerminal()
{
    BasicProgressReporter::Terminal terminal;
    terminal.write = [](std::string_view text) {
        // A progress bar that cannot be shown is no reason to fail.
        [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, text.data(), text.size());
    };
    terminal.now = [] { return BasicProgressReporter::Clock::now(); };
    terminal.isTerminal = isatty(STDERR_FILENO) == 1;
    winsize size = {};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0)
        terminal.columns = size.ws_col;
    return terminal;
}

/// The start of UTF-8 \p text with at most \p count code points, without control characters.
std::string TakeCharacters(std::string_view text, std::size_t count)
{
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool continues = (byte & 0xC0U) == 0x80U;
        if (byte < 0x20U || byte == 0x7FU)
            continue;
        if (!continues && count-- == 0)
            break;
        result += c;
    }
    return result;
}

} // namespace

BasicProgressReporter::BasicProgressReporter() : BasicProgressReporter(MakeStandardTerminal()) {}

BasicProgressReporter::BasicProgressReporter(Terminal terminal)
    : m_terminal(std::move(terminal)), m_nextDraw(m_terminal.now() + FirstDraw)
{}

BasicProgressReporter::~BasicProgressReporter()
{
    if (m_shown)
        m_terminal.write(ClearLine);
}

void BasicProgressReporter::Report(double fraction, const String& message)
{
    if (!m_terminal.isTerminal)
        return;
    const Clock::time_point now = m_terminal.now();
    if (now < m_nextDraw)
        return;
    m_nextDraw = now + DrawInterval;
    m_shown = true;
    m_terminal.write(std::string(ClearLine) + MakeLine(fraction, message));
}

std::string BasicProgressReporter::MakeLine(double fraction, std::string_view message) const
{
    const auto filled = static_cast<std::size_t>(fraction * static_cast<double>(BarLength));
    std::string line = "[";
    line.append(filled, '#');
    line.append(BarLength - filled, ' ');
    line += "] ";
    line += ToString(static_cast<int>(fraction * 100.0)).GetStdString() + "% ";
    line += message;
    // A full line would wrap on some terminals and could then not be cleared.
    return TakeCharacters(line, static_cast<std::size_t>(std::max(m_terminal.columns - 1, 0)));
}

} // namespace Kernel
