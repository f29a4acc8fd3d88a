#include <string>
#include <vector>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/PivotTable.h"
#include "display/ViewModelData.h"
#include "platform/cells/CellMetaData.h"
#include "platform/cells/CellText.h"

namespace om {

namespace {

// A hash of a sequence of numbers and texts.
class Mixer {
 public:
  void Add(std::uint64_t value) noexcept {
    state = (state ^ value) * 0x9E3779B97F4A7C15U;
    state ^= state >> 29;
  }
  void Add(const void* address) noexcept { Add(reinterpret_cast<std::uint64_t>(address)); }
  // Adds what a reader sees of a text.
  void Add(const OmCellText* text) {
    Add(static_cast<const void*>(text));
    if (text == nullptr) {
      return;
    }
    const std::string bytes = text->Text();
    Add(std::hash<std::string>()(bytes));
    if (text->hasMeta()) {
      for (const int footnote : text->getMeta().Footnotes()) {
        Add(static_cast<std::uint64_t>(footnote));
      }
    }
  }
  template <typename Numbers>
  void AddAll(const Numbers& numbers) {
    Add(static_cast<std::uint64_t>(numbers.size()));
    for (const auto number : numbers) {
      Add(static_cast<std::uint64_t>(number));
    }
  }
  [[nodiscard]] std::uint64_t Value() const noexcept { return state; }

 private:
  std::uint64_t state = 1;
};

void AddDimension(Mixer& mixer, const OmDimension& dimension) {
  mixer.Add(dimension.NumCategories());
  // The path from the root: records, each with the index of its next child.
  std::vector<std::pair<ConstNode, unsigned int>> way;
  const auto enter = [&](const ConstNode& node) {
    mixer.Add(static_cast<const void*>(node.record));
    mixer.Add(node->Subscript());
    mixer.Add((node->IsGroup() ? 1U : 0U) | (node->Hide() ? 2U : 0U) |
              (node->HideLabels() ? 4U : 0U));
    mixer.Add(node->Text());
    mixer.Add(node.Count());
    way.emplace_back(node, 0);
  };
  enter(dimension.Root());
  while (!way.empty()) {
    auto& [node, next] = way.back();
    if (next == node.Count()) {
      way.pop_back();
    } else {
      enter(ConstNode(node)[next++]);
    }
  }
}

}  // namespace

std::uint64_t Fingerprint(OmPivotTable& table) {
  const OmPivotTable& constant = table;
  Mixer mixer;
  mixer.AddAll(constant.Layers());
  mixer.AddAll(constant.Rows());
  mixer.AddAll(constant.Columns());
  mixer.Add(static_cast<std::uint64_t>(constant.getNumCells()));
  mixer.Add(static_cast<std::uint64_t>(constant.getLayerLoc()));
  for (const OmCellText* const text :
       {static_cast<const OmCellText*>(table.Title()), constant.GetTableTitle(), constant.Caption(),
        constant.CornerText()}) {
    mixer.Add(text);
  }
  mixer.Add(constant.showCaption() ? 1U : 0U);
  for (const OmFootnote& footnote : constant.Footnotes()) {
    mixer.Add(footnote.Text());
    mixer.Add(static_cast<const OmCellText*>(footnote.Marker()));
  }
  for (unsigned long d = 0; d != constant.NDimensions(); ++d) {
    AddDimension(mixer, *constant.Dimension(static_cast<int>(d)));
  }
  return mixer.Value();
}

}  // namespace om
