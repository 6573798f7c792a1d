#pragma once

#include <vector>

#include "Cases.h"

namespace Benchmarks {

/// Draws every case once with each peer and compares the pictures with the library's: the mean
/// difference per channel, of 255, over the pixels that were drawn must not exceed the case's
/// tolerance.
/// \return whether all of them are alike.
bool CheckPeers(const std::vector<Case>& cases);

} // namespace Benchmarks
