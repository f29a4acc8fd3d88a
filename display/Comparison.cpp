#include "display/Comparison.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/PivotTable.h"
#include "display/CellNumber.h"
#include "display/Formats.h"
#include "display/ViewModelData.h"
#include "platform/cells/CellMetaData.h"
#include "platform/cells/CellProperties.h"
#include "platform/cells/CellText.h"
#include "platform/cells/Number.h"

namespace om {

namespace {

using Kind = Difference::Kind;
using Texts = std::vector<std::string>;
constexpr unsigned int kNone = ShownDimension::kNone;

std::string TextOf(const OmCellText* text) {
  return text != nullptr ? text->Text() : std::string();
}

std::string Join(const Texts& texts, const char* between) {
  std::string joined;
  for (const std::string& text : texts) {
    joined += (joined.empty() ? "" : between) + text;
  }
  return joined;
}

// Returns the footnotes that a text refers to: their own markers and their texts.
std::string FootnotesOf(const OmPivotTable& table, const OmCellText* text) {
  Texts notes;
  if (text != nullptr && text->hasMeta()) {
    for (const int index : text->getMeta().Footnotes()) {
      const auto i = static_cast<unsigned long>(index);
      if (index >= 0 && i < table.Footnotes().size() && table.Footnotes()[i].Text() != nullptr) {
        const OmCellText* const marker = table.Footnotes()[i].Marker();
        notes.push_back((marker != nullptr ? "[" + marker->Text() + "] " : "") +
                        table.Footnotes()[i].Text()->Text());
      }
    }
  }
  return Join(notes, "; ");
}

// Returns the fields of a format as texts, each with its name.
std::vector<std::pair<const char*, std::string>> FieldsOf(const AreaFormat& format) {
  const auto number = [](auto value) { return std::to_string(static_cast<int>(value)); };
  return {{"font", format.fontName},
          {"size", std::to_string(format.fontSize)},
          {"style", number(format.fontStyle)},
          {"underline", number(format.underline)},
          {"horizontal", number(format.horizontal)},
          {"vertical", number(format.vertical)},
          {"text colour", format.textColor},
          {"background", format.backgroundColor},
          {"left", number(format.marginLeft)},
          {"right", number(format.marginRight)},
          {"top", number(format.marginTop)},
          {"bottom", number(format.marginBottom)},
          {"decimal offset", number(format.decimalOffset)}};
}

// Returns the positions that are not part of a longest increasing subsequence.
std::vector<unsigned long> OutOfOrder(const std::vector<unsigned int>& sequence) {
  std::vector<unsigned long> ends;  // last positions of increasing subsequences of length 1, 2, …
                                    // with the smallest last values
  std::vector<unsigned long> before(sequence.size(), ~0UL);
  for (unsigned long i = 0; i != sequence.size(); ++i) {
    const auto at = std::lower_bound(
        ends.begin(), ends.end(), sequence[i],
        [&](unsigned long end, unsigned int value) { return sequence[end] < value; });
    before[i] = at == ends.begin() ? ~0UL : *(at - 1);
    if (at == ends.end()) {
      ends.push_back(i);
    } else {
      *at = i;
    }
  }
  std::vector<bool> selected(sequence.size(), false);
  for (unsigned long i = ends.empty() ? ~0UL : ends.back(); i != ~0UL; i = before[i]) {
    selected[i] = true;
  }
  std::vector<unsigned long> out;
  for (unsigned long i = 0; i != sequence.size(); ++i) {
    if (!selected[i]) {
      out.push_back(i);
    }
  }
  return out;
}

// Where a dimension is, as a text for readers and for the comparison.
struct Position {
  const ShownAxis::Dimension* dimension = nullptr;
  std::string name;
  std::string place;
};

// One of the two tables.
struct Side {
  explicit Side(const TableView& view_)
      : view(view_), model(TableView::Data::Model(view_)), formats(view_.Table()) {
    std::map<std::string, int> seen;
    for (const auto& [axis, axisName] :
         {std::pair(&model.layers, "layers"), std::pair(&model.rows, "rows"),
          std::pair(&model.columns, "columns")}) {
      int number = 0;
      for (const ShownAxis::Dimension& dimension : axis->Dimensions()) {
        ++number;
        if (model.deciding[static_cast<unsigned long>(dimension.index)] != &dimension) {
          continue;
        }
        const OmDimensionNode& root = dimension.shown.Root()->Data();
        Position& position = positions.emplace_back();
        position.dimension = &dimension;
        position.name = TextOf(root.Text());
        position.place = std::string(axisName) + " " + std::to_string(number) +
                         (root.Hide() ? ", name hidden" : "");
        // Dimensions with the same name are distinguished by their order.
        position.name.append(static_cast<unsigned long>(seen[position.name]++), '\'');
      }
    }
  }

  [[nodiscard]] const Position* Find(const std::string& name) const {
    const auto found = std::find_if(positions.begin(), positions.end(),
                                    [&](const Position& other) { return other.name == name; });
    return found != positions.end() ? &*found : nullptr;
  }

  const TableView& view;
  const ViewModel& model;
  TableFormats formats;
  std::vector<Position> positions;  // outermost layer dimension first, then rows and columns
};

// A dimension that both tables show, and which of its categories correspond.
struct Match {
  const Position* sides[2];
  std::vector<unsigned int>
      other[2];  // for each category of a side, that of the other side, or kNone
};

class Comparer {
 public:
  Comparer(const TableView& first, const TableView& second, const CompareOptions& options_)
      : options(options_), sides{Side(first), Side(second)} {}

  std::vector<Difference> Run() {
    CompareText("title", sides[0].view.Title(), sides[1].view.Title());
    CompareText("corner", CornerOf(sides[0]), CornerOf(sides[1]));
    CompareText("caption", sides[0].view.Caption(), sides[1].view.Caption());
    const bool same = CompareDimensions();
    for (Match& match : matches) {
      CompareCategories(match);
    }
    CompareAreas();
    if (same) {
      CompareCells(0);
      CompareCells(1);
    }
    return std::move(differences);
  }

 private:
  [[nodiscard]] bool IsFull() const { return differences.size() >= options.most; }

  Difference* Add(Kind kind, const std::string& where, const std::string& first,
                  const std::string& second) {
    if (IsFull()) {
      return nullptr;
    }
    Difference& difference = differences.emplace_back();
    difference.kind = kind;
    difference.where = where;
    difference.first = first;
    difference.second = second;
    return &difference;
  }
  void CompareStrings(Kind kind, const std::string& where, const std::string& first,
                      const std::string& second) {
    if (first != second) {
      Add(kind, where, first, second);
    }
  }
  void CompareFootnotes(const std::string& where, const OmCellText* first,
                        const OmCellText* second) {
    if (options.footnotes) {
      CompareStrings(Kind::kFootnote, where, FootnotesOf(sides[0].view.Table(), first),
                     FootnotesOf(sides[1].view.Table(), second));
    }
  }
  void CompareText(const char* where, const OmCellText* first, const OmCellText* second) {
    CompareStrings(Kind::kText, where, TextOf(first), TextOf(second));
    CompareFootnotes(where, first, second);
  }
  static const OmCellText* CornerOf(const Side& side) {
    for (const CornerLabel& label : side.view.Corner()) {
      if (label.dimension < 0) {
        return label.text;
      }
    }
    return nullptr;
  }

  // Returns whether both tables have the same dimensions.
  bool CompareDimensions() {
    bool same = true;
    for (const Position& position : sides[0].positions) {
      const Position* const other = sides[1].Find(position.name);
      CompareStrings(Kind::kDimension, position.name, position.place,
                     other != nullptr ? other->place : std::string());
      if (other == nullptr) {
        same = false;
        continue;
      }
      matches.push_back({{&position, other}, {}});
      CompareFootnotes(position.name, position.dimension->shown.Root()->Data().Text(),
                       other->dimension->shown.Root()->Data().Text());
    }
    for (const Position& position : sides[1].positions) {
      if (sides[0].Find(position.name) == nullptr) {
        Add(Kind::kDimension, position.name, "", position.place);
        same = false;
      }
    }
    return same;
  }

  // Returns the labels of a category without the dimension's name.
  static std::vector<ConstNode> LabelsOf(const Position& position, unsigned int leaf) {
    std::vector<ConstNode> labels = position.dimension->shown.LabelsOf(leaf);
    if (!labels.empty() && labels[0].record == position.dimension->shown.Root()) {
      labels.erase(labels.begin());
    }
    return labels;
  }
  static Texts TextsOf(const Position& position, unsigned int leaf) {
    Texts texts;
    for (const ConstNode& node : LabelsOf(position, leaf)) {
      texts.push_back(TextOf(node->Text()));
    }
    return texts;
  }
  static std::string Path(const Position& position, unsigned int leaf) {
    const std::string labels = Join(TextsOf(position, leaf), "/");
    return position.name + "/" + (labels.empty() ? "#" + std::to_string(leaf) : labels);
  }

  void CompareCategories(Match& match) {
    // Categories with the same labels are distinguished by their order.
    std::map<std::pair<Texts, int>, unsigned int> known;
    std::map<Texts, int> seen;
    for (int s = 1; s >= 0; --s) {
      const auto count = static_cast<unsigned int>(Leaves(match, s).size());
      match.other[s].assign(count, kNone);
      seen.clear();
      for (unsigned int leaf = 0; leaf != count; ++leaf) {
        const Texts texts = TextsOf(*match.sides[s], leaf);
        const std::pair key(texts, seen[texts]++);
        if (s == 1) {
          known[key] = leaf;
        } else if (const auto found = known.find(key); found != known.end()) {
          match.other[0][leaf] = found->second;
          match.other[1][found->second] = leaf;
        }
      }
    }
    for (int s = 0; s != 2; ++s) {
      for (unsigned int leaf = 0; leaf != match.other[s].size(); ++leaf) {
        if (match.other[s][leaf] == kNone) {
          const std::string path = Path(*match.sides[s], leaf);
          Add(Kind::kCategory, path, s == 0 ? path : "", s == 0 ? "" : path);
        }
      }
    }
    std::vector<unsigned int> leaves;
    std::vector<unsigned int> order;
    for (unsigned int leaf = 0; leaf != match.other[0].size(); ++leaf) {
      if (match.other[0][leaf] != kNone) {
        leaves.push_back(leaf);
        order.push_back(match.other[0][leaf]);
      }
    }
    for (const unsigned long i : OutOfOrder(order)) {
      Add(Kind::kCategory, Path(*match.sides[0], leaves[i]),
          "category " + std::to_string(leaves[i]), "category " + std::to_string(order[i]));
    }
    CompareLabels(match, leaves);
  }

  void CompareLabels(const Match& match, const std::vector<unsigned int>& leaves) {
    std::set<const void*> done;
    for (const unsigned int leaf : leaves) {
      const std::vector<ConstNode> first = LabelsOf(*match.sides[0], leaf);
      const std::vector<ConstNode> second = LabelsOf(*match.sides[1], match.other[0][leaf]);
      for (unsigned long i = 0; options.footnotes && i != first.size(); ++i) {
        if (done.insert(first[i].record).second) {
          CompareFootnotes(Path(*match.sides[0], leaf), first[i]->Text(), second[i]->Text());
        }
      }
    }
  }

  void CompareAreas() {
    static constexpr std::array<const char*, kTableAreas> kNames = {
        "table",      "title", "layers",  "corner",   "column labels",
        "row labels", "data",  "caption", "footnotes"};
    for (unsigned int i = 0; i != kTableAreas && options.formats; ++i) {
      const auto area = static_cast<TableArea>(i);
      for (const Place row : {Place{0}, Place{1}}) {
        const bool compared =
            row == 0 || sides[0].formats.Alternates(area) || sides[1].formats.Alternates(area);
        if (compared) {
          CompareFormats(kNames[i] + std::string(row == 0 ? "" : ", alternate"),
                         sides[0].formats.Of(area, row), sides[1].formats.Of(area, row));
        }
      }
    }
  }
  // Returns the difference that was added, or null.
  Difference* CompareFormats(const std::string& where, const AreaFormat& first,
                             const AreaFormat& second) {
    if (first == second) {
      return nullptr;
    }
    Texts shown[2];
    const auto a = FieldsOf(first);
    const auto b = FieldsOf(second);
    for (unsigned long i = 0; i != a.size(); ++i) {
      if (a[i].second != b[i].second) {
        shown[0].push_back(a[i].first + (" " + a[i].second));
        shown[1].push_back(b[i].first + (" " + b[i].second));
      }
    }
    return Add(Kind::kFormat, where, Join(shown[0], ", "), Join(shown[1], ", "));
  }

  static const std::vector<ShownDimension::Leaf>& Leaves(const Match& match, int s) {
    return match.sides[s]->dimension->shown.Leaves();
  }

  // Compares the cells of one side with those of the other. Of the second side, only the cells that
  // the first side does not have.
  void CompareCells(int s) {
    CellSites sites(sides[s].model);
    std::vector<int> others(sides[1 - s].model.deciding.size());
    std::vector<unsigned int> leaves(matches.size());
    sides[s].model.WalkCells([&](const std::vector<int>& subscripts, OmCellText& cell) {
      if (IsFull() || !sites.Find(subscripts)) {
        return;
      }
      std::fill(others.begin(), others.end(), 0);
      for (unsigned long m = 0; m != matches.size(); ++m) {
        const ShownAxis::Dimension& mine = *matches[m].sides[s]->dimension;
        const int subscript = subscripts[static_cast<unsigned long>(mine.index)];
        leaves[m] = mine.shown.BySubscript()[mine.shown.Find(subscript).first];
        const unsigned int other = matches[m].other[s][leaves[m]];
        if (other == kNone) {
          return;
        }
        others[static_cast<unsigned long>(matches[m].sides[1 - s]->dimension->index)] =
            Leaves(matches[m], 1 - s)[other].subscript;
      }
      OmCellText* const other = sides[1 - s].model.Cell(others);
      if (s == 0) {
        CompareCell(&cell, other, s, leaves, subscripts, others);
      } else if (other == nullptr) {
        CompareCell(other, &cell, s, leaves, others, subscripts);
      }
    });
  }

  void CompareCell(const OmCellText* first, const OmCellText* second, int s,
                   const std::vector<unsigned int>& leaves, const std::vector<int>& subscripts,
                   const std::vector<int>& others) {
    const unsigned long before = differences.size();
    CompareValue(first, second);
    CompareFootnotes("", first, second);
    if (options.formats && first != nullptr && second != nullptr) {
      const AreaFormat plain;
      CompareFormats("", Styled(plain, sides[0].formats.CellStyle(*first)),
                     Styled(plain, sides[1].formats.CellStyle(*second)));
    }
    for (unsigned long i = before; i != differences.size(); ++i) {
      Texts path;
      for (unsigned long m = 0; m != matches.size(); ++m) {
        path.push_back(Path(*matches[m].sides[s], leaves[m]));
      }
      differences[i].where = Join(path, " › ");
      differences[i].firstSubscripts = subscripts;
      differences[i].secondSubscripts = others;
    }
  }

  void CompareValue(const OmCellText* first, const OmCellText* second) {
    std::optional<CellNumber> a;
    std::optional<CellNumber> b;
    if (first != nullptr && second != nullptr) {
      a = NumberOf(*first);
      b = NumberOf(*second);
    }
    const bool numbers = a && b && !a->labelled && !b->labelled;
    const bool equal = numbers && AreEqual(a->value, b->value);
    const bool alike = numbers && AreFormattedAlike(*a, *b);
    if (equal && alike) {
      return;
    }
    const std::string shown[2] = {TextOf(first), TextOf(second)};
    if (shown[0] == shown[1]) {
      return;
    }
    if (!equal) {
      Add(Kind::kCell, "", shown[0], shown[1]);
    } else if (options.formats && !alike) {
      Add(Kind::kFormat, "", shown[0], shown[1]);
    }
  }
  [[nodiscard]] bool AreEqual(double a, double b) const {
    if (std::isnan(a) || std::isnan(b) || std::isinf(a) || std::isinf(b)) {
      return a == b || (std::isnan(a) && std::isnan(b));
    }
    const double room =
        std::max(options.absolute, options.relative * std::max(std::abs(a), std::abs(b)));
    return std::abs(a - b) <= room;
  }
  static bool SameFormat(const Qualtex_Format& a, const Qualtex_Format& b) {
    return a.Type() == b.Type() && a.Decimals() == b.Decimals();
  }
  // Two numbers constructed without a format count as formatted alike, although their decimals
  // depend on the number.
  static bool AreFormattedAlike(const CellNumber& a, const CellNumber& b) {
    return SameFormat(a.format, b.format) || (SameFormat(a.format, OmNumber(a.value).Format()) &&
                                              SameFormat(b.format, OmNumber(b.value).Format()));
  }

  const CompareOptions& options;
  Side sides[2];
  std::vector<Match> matches;
  std::vector<Difference> differences;
};

}  // namespace

std::vector<Difference> Compare(const TableView& first, const TableView& second,
                                const CompareOptions& options) {
  if (!(options.absolute >= 0) || !(options.relative >= 0)) {
    throw std::invalid_argument("A tolerance is a number that is not negative.");
  }
  return Comparer(first, second, options).Run();
}

}  // namespace om
