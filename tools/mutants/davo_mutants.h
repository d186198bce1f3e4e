// SPDX-License-Identifier: GPL-3.0-or-later
// What the sources that tools/mutate.py has rewritten call. Each change has a number N; that which
// the environment variable DAVO_MUTANT names is on. With DAVO_MUTANTS_REACHED, the name of a file,
// every number that is come by is written there once.
#pragma once
#pragma GCC system_header

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <type_traits>

namespace davo_mutants {

inline int Chosen() {
    static const int chosen = [] {
        const char* text = std::getenv("DAVO_MUTANT");
        return text == nullptr ? 0 : std::atoi(text);
    }();
    return chosen;
}

inline int ReachedFile() {
    static const int file = [] {
        const char* name = std::getenv("DAVO_MUTANTS_REACHED");
        return name == nullptr ? -1 : open(name, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    }();
    return file;
}

// Never inlined: its symbol says that the change is in code that runs, not in a constant.
template <int N>
[[gnu::noinline]] bool Live() {
    static bool noted = false;
    const int number = N;
    // Some tests keep every file from growing: then it is tried again later.
    if (!noted)
        noted = ReachedFile() < 0 || write(ReachedFile(), &number, sizeof number) == sizeof number;
    return Chosen() == N;
}

template <int N>
constexpr bool On() {
    if (std::is_constant_evaluated()) return false;
    return Live<N>();
}

template <int N, class T>
constexpr T Value(T value) {
    if (!On<N>()) return value;
    if constexpr (std::is_same_v<T, bool>) {
        return !value;
    } else if constexpr (std::is_floating_point_v<T>) {
        return value == 0 ? T(1) : value * T(1.1);
    } else {
        return T(value + T(1));
    }
}

// Where the types have no such operator, nothing changes and nothing is counted.
#define DAVO_MUTANTS_COMPARE(name, op, bound)                        \
    template <int B, int N, class L, class R>                        \
    constexpr bool name(const L& left, const R& right) {             \
        if constexpr (requires { left bound right; }) {              \
            if (On<B>()) return static_cast<bool>(left bound right); \
        }                                                            \
        return On<N>() != static_cast<bool>(left op right);          \
    }
DAVO_MUTANTS_COMPARE(Less, <, <=)
DAVO_MUTANTS_COMPARE(LessEqual, <=, <)
DAVO_MUTANTS_COMPARE(Greater, >, >=)
DAVO_MUTANTS_COMPARE(GreaterEqual, >=, >)
#undef DAVO_MUTANTS_COMPARE

#define DAVO_MUTANTS_BINARY(name, op, other)                                            \
    template <int N, class L, class R>                                                  \
    constexpr auto name(const L& left, const R& right)->decltype(left op right) {       \
        if constexpr (requires { decltype(left op right)(left other right); }) {        \
            if (On<N>()) return static_cast<decltype(left op right)>(left other right); \
        }                                                                               \
        return left op right;                                                           \
    }
DAVO_MUTANTS_BINARY(Plus, +, -)
DAVO_MUTANTS_BINARY(Minus, -, +)
DAVO_MUTANTS_BINARY(Times, *, /)
DAVO_MUTANTS_BINARY(Over, /, *)
DAVO_MUTANTS_BINARY(Rest, %, *)
DAVO_MUTANTS_BINARY(And, &, |)
DAVO_MUTANTS_BINARY(Or, |, &)
DAVO_MUTANTS_BINARY(ShiftLeft, <<, >>)
DAVO_MUTANTS_BINARY(ShiftRight, >>, <<)
#undef DAVO_MUTANTS_BINARY

#define DAVO_MUTANTS_ASSIGN(name, op, other)     \
    template <int N, class L, class R>           \
    constexpr L& name(L& left, const R& right) { \
        if (On<N>()) {                           \
            left other right;                    \
        } else {                                 \
            left op right;                       \
        }                                        \
        return left;                             \
    }
DAVO_MUTANTS_ASSIGN(PlusAssign, +=, -=)
DAVO_MUTANTS_ASSIGN(MinusAssign, -=, +=)
DAVO_MUTANTS_ASSIGN(TimesAssign, *=, /=)
DAVO_MUTANTS_ASSIGN(OverAssign, /=, *=)
DAVO_MUTANTS_ASSIGN(AndAssign, &=, |=)
DAVO_MUTANTS_ASSIGN(OrAssign, |=, &=)
#undef DAVO_MUTANTS_ASSIGN

template <int N, class T>
constexpr auto Negative(const T& value) -> decltype(-value) {
    return On<N>() ? static_cast<decltype(-value)>(value) : -value;
}

template <int N, class T>
constexpr T& Before(T& value, bool up) {
    return On<N>() != up ? ++value : --value;
}

template <int N, class T>
constexpr T After(T& value, bool up) {
    return On<N>() != up ? value++ : value--;
}

}  // namespace davo_mutants
