#pragma once

#include <random>

namespace Benchmarks {

/// Numbers that are the same on every system.
class Random
{
public:
    explicit Random(unsigned seed) : m_engine(seed) {}
    /// Evenly spread over [0, end).
    double Below(double end) { return end * (double(m_engine()) / 4294967296.0); }

private:
    std::mt19937 m_engine;
};

} // namespace Benchmarks
