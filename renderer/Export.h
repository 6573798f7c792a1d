#pragma once

/// Marks what the shared library librenderer exports; everything else stays hidden.
#define RENDERER_EXPORT __attribute__((visibility("default")))
