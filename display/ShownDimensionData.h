// One dimension as a view shows it: its categories in display order, and the labels over them as a
// forest. A category needs 44 bytes, a group 32.

#ifndef DISPLAY_SHOWNDIMENSIONDATA_H
#define DISPLAY_SHOWNDIMENSIONDATA_H

#include <utility>
#include <vector>

#include "display/TableView.h"

class OmDimension;

namespace om {

class ShownDimension {
 public:
  using Record = OmVectorTreeData<OmDimensionNode>;
  static constexpr unsigned int kNone = ~0U;

  // Which labels are shown.
  enum class Role : unsigned char {
    kLayers,       // a hidden group that hides labels does not end them, as in the layer heading
    kHead,         // it does, as in the row and column headings
    kCornerNamed,  // it does, and the root is not a label
  };

  // Whether further labels are between a label and the categories that it covers.
  enum class Below : unsigned char {
    kLabels,   // for all of its categories
    kSome,     // for some of them
    kNothing,  // for none; the label may cover all further levels
  };

  struct Leaf {
    int subscript;
    unsigned int label;  // the innermost one: its own, or the blank that covers it
  };

  // A label, or a blank: a run of categories without labels of their own below one label.
  struct LabelNode {
    const Record* record;  // null in a blank
    unsigned int depth;    // of the record
    unsigned int parent;   // the label around this one, or kNone
    unsigned int first;    // of the categories that it covers
    unsigned int last;     // one past the last
    unsigned int level;
    Below below;
  };

  ShownDimension(const OmDimension& dimension, bool keepHidden, Role role);

  [[nodiscard]] const std::vector<Leaf>& Leaves() const noexcept { return leaves; }
  [[nodiscard]] const std::vector<LabelNode>& Labels() const noexcept { return labels; }
  [[nodiscard]] const Record* Root() const noexcept { return root; }
  // Returns the number of labels over a category.
  [[nodiscard]] unsigned int LevelsOf(unsigned int leaf) const noexcept {
    const LabelNode& label = labels[leaves[leaf].label];
    return label.level + (label.record != nullptr ? 1 : 0);
  }
  // Returns the largest such number.
  [[nodiscard]] unsigned int Levels() const noexcept { return levels; }
  [[nodiscard]] ConstNode Category(unsigned int leaf) const noexcept;
  // Returns the labels over a category, outermost first.
  [[nodiscard]] std::vector<ConstNode> LabelsOf(unsigned int leaf) const;
  // Returns the categories with that subscript, as a range of positions in BySubscript().
  [[nodiscard]] std::pair<unsigned int, unsigned int> Find(int subscript) const noexcept;
  [[nodiscard]] const std::vector<unsigned int>& BySubscript() const noexcept {
    return bySubscript;
  }
  // Returns whether a hidden category that is left out has that subscript.
  [[nodiscard]] bool IsHidden(int subscript) const noexcept;
  // Returns whether a category is without a subscript.
  [[nodiscard]] bool AnyWithout() const noexcept { return bySubscript.size() != leaves.size(); }

 private:
  struct Step;
  // A category in a blank. Its record is in no LabelNode.
  struct Bare {
    unsigned int leaf;
    unsigned int depth;
    const Record* record;
  };

  void Walk(const OmDimension& dimension, bool keepHidden, Role role);
  void AddLeaf(const Step& step);
  void Index();

  const Record* root;
  std::vector<Leaf> leaves;
  std::vector<LabelNode> labels;
  std::vector<Bare> bare;                 // ordered by leaf
  std::vector<unsigned int> bySubscript;  // the leaves with a subscript, ordered by it
  std::vector<int> hidden;                // subscripts of categories that are left out, ordered
  unsigned int levels = 0;
};

}  // namespace om

#endif
