#include <kernel/Progress.h>

#include <algorithm>
#include <cmath>

namespace Kernel {

Progress::~Progress() = default;

void Progress::SetProgress(double fraction)
{
    const std::lock_guard lock(m_mutex);
    Change(fraction);
}

void Progress::AddProgress(double step)
{
    const std::lock_guard lock(m_mutex);
    Change(m_fraction + step);
}

double Progress::GetProgress() const
{
    const std::lock_guard lock(m_mutex);
    return m_fraction;
}

void Progress::SetMessage(std::string_view message)
{
    const std::lock_guard lock(m_mutex);
    m_message = String(message);
    Report(m_fraction, m_message);
}

void Progress::Change(double fraction)
{
    if (std::isnan(fraction))
        return;
    m_fraction = std::clamp(fraction, 0.0, 1.0);
    Report(m_fraction, m_message);
}

} // namespace Kernel
