// What front ends ask of a table: over random tables against a twin and the headings, and the cases
// that have a rule of their own.

#include <gtest/gtest.h>

#include "tests/support/ViewCheck.h"

namespace {

TEST(Display, HoldsTheTwinOfRandomTables) {
  Play<view_model::ViewPlay>(1000, 1);
}

}  // namespace
