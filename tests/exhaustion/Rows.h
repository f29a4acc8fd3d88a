// Rows of a table that are made of calls alone: EACH(ROW, a, b, c) is ROW(a), ROW(b), ROW(c).

#ifndef TESTS_EXHAUSTION_ROWS_H
#define TESTS_EXHAUSTION_ROWS_H

#define EACH(row, ...) EACH_3(EACH_FIRST(row, __VA_ARGS__))
// clang-format off
#define EACH_FIRST(row, call, ...) row(call) __VA_OPT__(, EACH_REST EACH_NONE (row, __VA_ARGS__))
// clang-format on
#define EACH_REST() EACH_FIRST
#define EACH_NONE ()
#define EACH_3(...) EACH_2(EACH_2(EACH_2(EACH_2(__VA_ARGS__))))
#define EACH_2(...) EACH_1(EACH_1(EACH_1(EACH_1(__VA_ARGS__))))
#define EACH_1(...) EACH_0(EACH_0(EACH_0(EACH_0(__VA_ARGS__))))
#define EACH_0(...) __VA_ARGS__

#endif
