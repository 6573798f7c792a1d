#pragma once

#include <algorithm>
#include <vector>

namespace Renderer {

/// Makes sure that the next push_back needs no memory, so that several stacks can grow together or
/// not at all.
template<class T>
void MakeRoomForOne(std::vector<T>& stack)
{
    if (stack.size() == stack.capacity())
        stack.reserve(std::max(stack.size() * 2, std::size_t{8}));
}

} // namespace Renderer
