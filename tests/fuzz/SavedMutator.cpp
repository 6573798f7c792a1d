// Changes the objects or the payloads of a file of saved values, and writes into its header how
// long the objects are then: hardly any file with another length would be looked into.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <kernel/SavedFormat.h>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr std::size_t HeaderSize = Kernel::SavedFormat::HeaderSize;
constexpr std::size_t LengthOffset = HeaderSize - sizeof(std::uint64_t);

std::uint64_t ReadLength(const std::uint8_t* data)
{
    std::uint64_t length = 0;
    for (std::size_t i = LengthOffset; i < HeaderSize; ++i)
        length = length << 8 | data[i];
    return length;
}

void WriteLength(std::uint8_t* data, std::uint64_t length)
{
    for (std::size_t i = HeaderSize; i-- > LengthOffset; length >>= 8)
        data[i] = static_cast<std::uint8_t>(length);
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed)
{
    constexpr unsigned Whole = 16, Payloads = 4; // one in so many
    if (seed % Whole == 0 || size <= HeaderSize || ReadLength(data) > size - HeaderSize)
        return LLVMFuzzerMutate(data, size, maxSize);
    std::uint8_t* const middle = data + HeaderSize + ReadLength(data);
    Bytes objects(data + HeaderSize, middle), payloads(middle, data + size);
    Bytes& part = seed / Whole % Payloads == 0 ? payloads : objects;
    const std::size_t partSize = part.size();
    part.resize(maxSize - (size - partSize));
    part.resize(LLVMFuzzerMutate(part.data(), partSize, part.size()));
    WriteLength(data, objects.size());
    std::ranges::copy(payloads, std::ranges::copy(objects, data + HeaderSize).out);
    return HeaderSize + objects.size() + payloads.size();
}
