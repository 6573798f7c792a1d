#pragma once

/// Marks what the shared library libraster exports; everything else stays hidden.
#define RASTER_EXPORT __attribute__((visibility("default")))
