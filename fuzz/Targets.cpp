#include "fuzz/Targets.h"

#include "fuzz/Records.h"
#include "tests/support/DimensionModel.h"
#include "tests/support/DocumentModel.h"
#include "tests/support/LayoutCheck.h"
#include "tests/support/ListModel.h"
#include "tests/support/StoreModel.h"
#include "tests/support/TreeModel.h"
#include "tests/support/VectorModel.h"

namespace {

template <typename Model>
void PlayModel(const unsigned char* data, unsigned long size) {
  Choices choices(data, size);
  Model model(choices);
  // The bound is for steps that take no choice.
  for (int step = 0; step != 3000 && !choices.Done(); ++step) {
    model.Step();
  }
  model.End();
}

struct Target {
  const char* name;
  void (*play)(const unsigned char* data, unsigned long size);
};

constexpr Target kTargets[] = {
    {"vector", PlayModel<VectorModel>},
    {"vectortree", PlayModel<tree_model::TreeModel>},
    {"listtree", PlayModel<ListModel>},
    {"dimension", PlayModel<dimension_model::DimensionModel>},
    {"store", PlayModel<StoreModel>},
    {"footnotes", PlayModel<FootnoteModel>},
    {"headings", PlayModel<layout_model::LayoutPlay>},
    {"document", PlayModel<DocumentModel>},
    {"mapinfo", CheckMapInfo},
    {"csv", CheckCsv},
};

}  // namespace

bool PlayBytes(const std::string& name, const unsigned char* data, unsigned long size) {
  for (const Target& target : kTargets) {
    if (name == target.name) {
      target.play(data, size);
      return true;
    }
  }
  return false;
}
