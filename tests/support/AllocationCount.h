#pragma once

namespace TestSupport {

/// How often the program has asked for memory through operator new. For programs that
/// AllocationCount.cpp is a part of.
unsigned long GetAllocationCount();

} // namespace TestSupport
