// What scripts/mutate writes into a copy of the sources: each changed place asks here which of its
// mutants is switched on. Compiled in that copy only.
//
// OM_MUTANT holds the number of the mutant of this process; without it there is none.
// OM_MUTANTS_REACHED names a file with a byte for each number, which is set when a place with that
// mutant is reached. The file is mapped, so what a process reached counts however it ended.
//
// Every function takes the number of the first mutant of its place; the others follow it in the
// order in which places.py lists them.

#ifndef TOOLS_MUTATION_MUTANT_H
#define TOOLS_MUTATION_MUTANT_H

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <type_traits>

namespace om_mutant {

inline const int active = [] {
  const char* const number = std::getenv("OM_MUTANT");
  return number != nullptr ? std::atoi(number) : 0;
}();

inline char* const reached = [] {
  const char* const name = std::getenv("OM_MUTANTS_REACHED");
  const int file = name != nullptr ? open(name, O_RDWR) : -1;
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) {
    return static_cast<char*>(nullptr);
  }
  void* const map = mmap(nullptr, static_cast<unsigned long>(status.st_size),
                         PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  return map != MAP_FAILED ? static_cast<char*>(map) : nullptr;
}();

// Returns which mutant of a place is on: 0 for the first, negative or `count` and more for none.
template <int count = 1>
constexpr int Which(int first) noexcept {
  if (std::is_constant_evaluated()) {
    return -1;
  }
  if (reached != nullptr) [[unlikely]] {
    for (int i = 0; i != count; ++i) {
      reached[first + i] = 1;
    }
  }
  return active - first;
}

constexpr bool Is(int n) noexcept {
  return Which(n) == 0;
}

// --- Truth values and constants ------------------------------------------------------------------

template <typename T>
constexpr bool Flip(int n, T&& value) {
  return static_cast<bool>(value) != Is(n);
}

// One more, or one less.
template <typename T>
constexpr T OffByOne(int n, T value) noexcept {
  const int which = Which<2>(n);
  return which == 0 ? static_cast<T>(value + 1) : which == 1 ? static_cast<T>(value - 1) : value;
}

template <typename T>
constexpr T OneMore(int n, T value) noexcept {
  return Is(n) ? static_cast<T>(value + 1) : value;
}

// The value-initialised one instead: null for a pointer, empty for a container.
template <typename T>
constexpr std::remove_cvref_t<T> Empty(int n, T&& value) {
  if (Is(n)) {
    return std::remove_cvref_t<T>();
  }
  return static_cast<T&&>(value);
}

// --- Operators -----------------------------------------------------------------------------------

#define OM_MUTANT_TWO(name, op, first, second)                                             \
  template <typename L, typename R>                                                        \
  constexpr decltype(auto) name(int n, const L& left, const R& right) {                    \
    const int which = Which<2>(n);                                                         \
    return which == 0 ? left first right : which == 1 ? left second right : left op right; \
  }
OM_MUTANT_TWO(Less, <, <=, >=)
OM_MUTANT_TWO(LessEqual, <=, <, >)
OM_MUTANT_TWO(Greater, >, >=, <=)
OM_MUTANT_TWO(GreaterEqual, >=, >, <)
#undef OM_MUTANT_TWO

#define OM_MUTANT_ONE(name, op, other)               \
  template <typename L, typename R>                  \
  constexpr auto name(int n, L&& left, R&& right) {  \
    return Is(n) ? left other right : left op right; \
  }
OM_MUTANT_ONE(Equal, ==, !=)
OM_MUTANT_ONE(NotEqual, !=, ==)
OM_MUTANT_ONE(Plus, +, -)
OM_MUTANT_ONE(Minus, -, +)
OM_MUTANT_ONE(Times, *, +)
OM_MUTANT_ONE(Over, /, *)
OM_MUTANT_ONE(Modulo, %, /)
OM_MUTANT_ONE(ShiftLeft, <<, >>)
OM_MUTANT_ONE(ShiftRight, >>, <<)
OM_MUTANT_ONE(BitAnd, &, |)
OM_MUTANT_ONE(BitOr, |, &)
OM_MUTANT_ONE(BitXor, ^, &)
#undef OM_MUTANT_ONE

#define OM_MUTANT_ASSIGN(name, op, other)             \
  template <typename L, typename R>                   \
  constexpr L& name(int n, L& left, const R& right) { \
    return Is(n) ? left other right : left op right;  \
  }
OM_MUTANT_ASSIGN(AssignPlus, +=, -=)
OM_MUTANT_ASSIGN(AssignMinus, -=, +=)
OM_MUTANT_ASSIGN(AssignTimes, *=, +=)
OM_MUTANT_ASSIGN(AssignOver, /=, *=)
OM_MUTANT_ASSIGN(AssignModulo, %=, /=)
OM_MUTANT_ASSIGN(AssignShiftLeft, <<=, >>=)
OM_MUTANT_ASSIGN(AssignShiftRight, >>=, <<=)
OM_MUTANT_ASSIGN(AssignBitAnd, &=, |=)
OM_MUTANT_ASSIGN(AssignBitOr, |=, &=)
OM_MUTANT_ASSIGN(AssignBitXor, ^=, &=)
#undef OM_MUTANT_ASSIGN

template <typename T>
constexpr decltype(auto) Increment(int n, T& value) {
  return Is(n) ? --value : ++value;
}
template <typename T>
constexpr decltype(auto) Decrement(int n, T& value) {
  return Is(n) ? ++value : --value;
}
template <typename T>
constexpr auto IncrementAfter(int n, T& value) {
  return Is(n) ? value-- : value++;
}
template <typename T>
constexpr auto DecrementAfter(int n, T& value) {
  return Is(n) ? value++ : value--;
}
template <typename T>
constexpr auto Negative(int n, const T& value) {
  return Is(n) ? +value : -value;
}
template <typename T>
constexpr auto Complement(int n, const T& value) {
  return Is(n) ? +value : ~value;
}

}  // namespace om_mutant

#endif
