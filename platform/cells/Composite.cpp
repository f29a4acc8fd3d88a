#include "platform/cells/Composite.h"

#include <vector>

namespace {

using Record = OmVectorTreeData<OmCellText*>;

// A text of the tree with its depth, null where the record has none.
struct Part {
  unsigned int level;
  const OmCellText* text;
};

void ListParts(const Record& record, unsigned int level, std::vector<Part>& parts) {
  parts.push_back({level, record.Data()});
  for (const Record& child : record.Children()) {
    ListParts(child, level + 1, parts);
  }
}

std::vector<Part> PartsOf(const Record& root) {
  std::vector<Part> parts;
  ListParts(root, 0, parts);
  return parts;
}

// A part that ends its list, has no text or stands higher comes first.
short ComparePart(const Part* a, const Part* b) {
  if (a == nullptr || b == nullptr) {
    return static_cast<short>((a != nullptr) - (b != nullptr));
  }
  if (a->level != b->level) {
    return a->level < b->level ? -1 : 1;
  }
  if (a->text == nullptr || b->text == nullptr) {
    return static_cast<short>((a->text != nullptr) - (b->text != nullptr));
  }
  return a->text->Compare(*b->text);
}

void CloneText(Record& to, const Record& from, OmMemoryRegion* region) {
  if (from.Data() != nullptr) {
    to.Data() = from.Data()->Clone(region);
  }
}

void AppendEmpty(Record& record) {
  OmCellText* none = nullptr;
  record.Child(none);
}

// Copies the text and the children of `from`. What is there when it fails is a valid tree.
void CloneInto(Record& to, const Record& from, OmMemoryRegion* region) {
  CloneText(to, from, region);
  to.Children().reserve(from.Children().size());
  for (const Record& child : from.Children()) {
    AppendEmpty(to);
    CloneInto(to.Children().back(), child, region);
  }
}

void DeleteTexts(Record& record) {
  for (Record& child : record.Children()) {
    DeleteTexts(child);
  }
  delete record.Data();
  record.Data() = nullptr;
}

}  // namespace

OmComposite::OmComposite(OmMemoryRegion* region) : OmCellText(region), tree(nullptr, region) {}

// The composite is complete before anything is copied: where copying fails, it is destroyed as it
// is.
OmComposite::OmComposite(const OmComposite& other, OmMemoryRegion* region) : OmComposite(region) {
  if (other.hasMeta()) {
    setMeta(other.getMeta());
  }
  CloneInto(tree, other.tree, region);
}

OmComposite::~OmComposite() {
  DeleteTexts(tree);
}

OmCellText* OmComposite::Clone(OmMemoryRegion* region) const {
  return new (region) OmComposite(*this, region);
}

short OmComposite::Compare(const OmCellText& other) const {
  const short order = OmCellText::Compare(other);
  if (order != 0 || other.Kind() != Kind()) {
    return order;
  }
  const std::vector<Part> a = PartsOf(tree);
  const std::vector<Part> b = PartsOf(static_cast<const OmComposite&>(other).tree);
  for (unsigned long i = 0; i < a.size() || i < b.size(); ++i) {
    if (const short parts =
            ComparePart(i < a.size() ? &a[i] : nullptr, i < b.size() ? &b[i] : nullptr);
        parts != 0) {
      return parts;
    }
  }
  return 0;
}

unsigned long OmComposite::Kind() const noexcept {
  return 7;
}

std::string OmComposite::Text() const {
  std::string text;
  for (const Part& part : PartsOf(tree)) {
    if (part.text != nullptr) {
      text += part.text->Text();
    }
  }
  return text;
}

void OmComposite::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}
