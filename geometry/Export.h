#pragma once

/// Marks what the shared library libgeometry exports; everything else stays hidden.
#define GEOMETRY_EXPORT __attribute__((visibility("default")))
