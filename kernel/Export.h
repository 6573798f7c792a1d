#pragma once

/// Marks what the shared library libkernel exports; everything else stays hidden.
#define KERNEL_EXPORT __attribute__((visibility("default")))
