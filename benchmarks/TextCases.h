#pragma once

namespace Benchmarks {

/// Registers Text/SIZE: lines of text of that many pixels, by the library and by Cairo, once from
/// its cache of glyphs and once as paths.
void RegisterText();

} // namespace Benchmarks
