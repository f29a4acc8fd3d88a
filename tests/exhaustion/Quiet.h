// Keeps the standard output silent while it lives, without an allocation of its own.

#ifndef TESTS_EXHAUSTION_QUIET_H
#define TESTS_EXHAUSTION_QUIET_H

#include <iostream>
#include <streambuf>

class Quiet : private std::streambuf {
 public:
  Quiet() : old(std::cout.rdbuf(this)) {}
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;
  ~Quiet() override { std::cout.rdbuf(old); }

 private:
  int overflow(int c) override { return c; }
  std::streamsize xsputn(const char*, std::streamsize n) override { return n; }

  std::streambuf* old;
};

#endif
