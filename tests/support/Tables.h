// Small helpers for tests over tables.

#ifndef TESTS_SUPPORT_TABLES_H
#define TESTS_SUPPORT_TABLES_H

#include <stdexcept>
#include <string>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTable.h"
#include "platform/cells/CellTexts.h"

// Adds a dimension of `count` categories with the subscripts 0, 1, … to a table.
inline OmDimension* AddDimension(OmPivotTable& table, const std::string& name, int count) {
  OmDimension* const dimension = table.AddDimension(OmStringCell(name));
  for (int i = 0; i < count; ++i) {
    dimension->AddNewChild(dimension->Root(), OmStringCell(name + std::to_string(i)),
                           static_cast<unsigned long>(i), false);
  }
  return dimension;
}

// A text that can be copied `left` times, its copies one time less each; -1 sets no limit.
class BrittleText : public OmCellText {
 public:
  explicit BrittleText(int left_) : left(left_) {}

  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region) const override {
    if (left == 0) {
      throw std::runtime_error("no more copies");
    }
    left -= left > 0 ? 1 : 0;
    return new (region) BrittleText(left);
  }
  [[nodiscard]] short Compare(const OmCellText& other) const override {
    return static_cast<short>(Text().compare(other.Text()));
  }
  [[nodiscard]] unsigned long Kind() const noexcept override { return 4711; }
  [[nodiscard]] std::string Text() const override { return "brittle"; }
  void Accept(Visitor&) override {}

 private:
  mutable int left;
};

#endif
