#pragma once

namespace Benchmarks {

/// Registers Saved/write and Saved/read: many small objects into a file in memory and back.
void RegisterSaved();

} // namespace Benchmarks
