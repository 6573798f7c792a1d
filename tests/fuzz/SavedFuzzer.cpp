// Loads, saves and describes files of the samples, which use everything the platform offers.

#include <cstddef>
#include <cstdint>

#include <kernel/saved/SavedSamples.h>

#include "SavedCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SavedCheck::CheckFile({data, data + size}, 0, [](const SavedCheck::Object&) {});
    return 0;
}
