#pragma once

#include <cstddef>

namespace TestSupport {

/// How often the program has asked for memory through operator new. For programs that
/// AllocationCount.cpp is a part of.
unsigned long GetAllocationCount();

/// Makes one request for memory fail: the one that comes after \p count others. Negative: none.
void FailAllocationAfter(long count);
/// Whether it has failed since.
bool HasAllocationFailed();

/// The most memory from operator new that was in use at a time since the call of ResetPeak, beyond
/// what was in use then, in bytes.
std::size_t GetPeak();
void ResetPeak();

} // namespace TestSupport
