#pragma once

namespace Kernel {

/// \file
/// One source compiled for several processors. All arithmetic is exactly rounded and never
/// contracted, so the builds differ in speed only.

/// Code for every processor of the architecture.
struct BaselineCode
{
    /// The size of a vector register.
    static constexpr unsigned VectorBytes = 16;

    /// Calls Function::Apply.
    template<class Function, class... Arguments>
    [[gnu::noinline, gnu::flatten]] static void Call(Arguments... arguments)
    {
        Function::Apply(arguments...);
    }
};

#if defined(__x86_64__)

/// Code for x86-64-v3 (AVX2). Everything that is called gets inlined and compiled anew; nothing
/// that other code might be linked to is compiled with these instructions.
struct WideCode
{
    static constexpr unsigned VectorBytes = 32;

    template<class Function, class... Arguments>
    [[gnu::noinline, gnu::flatten, gnu::target("arch=x86-64-v3")]] static void
    Call(Arguments... arguments)
    {
        Function::Apply(arguments...);
    }
};

/// Whether this processor runs WideCode.
inline bool HasWideCode()
{
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") &&
           __builtin_cpu_supports("fma");
}

#else

using WideCode = BaselineCode;

inline bool HasWideCode()
{
    return false;
}

#endif

} // namespace Kernel
