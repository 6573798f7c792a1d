#include <geometry/stroke/StrokeDashCutter.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Geometry {

void StrokeDashCutter::SetPattern(const StrokeParameters& parameters)
{
    m_isDashed = false;
    m_dashes.clear();
    if (parameters.dashes.empty())
        return;
    const int rounds = parameters.dashes.size() % 2 == 1 ? 2 : 1;
    for (int round = 0; round < rounds; ++round)
        for (const double dash : parameters.dashes)
            m_dashes.push_back(dash * parameters.dashUnit);
    m_period = std::accumulate(m_dashes.begin(), m_dashes.end(), 0.0);
    double gaps = 0.0;
    for (std::size_t i = 1; i < m_dashes.size(); i += 2)
        gaps += m_dashes[i];
    const bool valid =
        std::all_of(m_dashes.begin(), m_dashes.end(), [](double d) { return d >= 0.0; });
    m_isDashed = valid && gaps > 0.0 && std::isfinite(m_period);
    if (!m_isDashed)
        return;
    m_epsilon = 1e-9 * m_period;
    m_phase = std::fmod(parameters.dashPhase * parameters.dashUnit, m_period);
    if (m_phase < 0.0)
        m_phase += m_period;
}

void StrokeDashCutter::Restart()
{
    m_index = 0;
    m_remaining = m_dashes[0] - m_phase;
    while (m_remaining <= 0.0 && m_index + 1 < m_dashes.size()) {
        // A dash or gap that ends just where the run begins is over, but a dash of length 0 there
        // is still to come.
        if (m_remaining == 0.0 && m_dashes[m_index] == 0.0 && IsOn())
            break;
        m_remaining += m_dashes[++m_index];
    }
    m_remaining = std::max(m_remaining, 0.0);
}

void StrokeDashCutter::Advance()
{
    m_index = (m_index + 1) % m_dashes.size();
    m_remaining = m_dashes[m_index];
}

} // namespace Geometry
