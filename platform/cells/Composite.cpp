#include "platform/cells/Composite.h"

#include <algorithm>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

using Record = OmVectorTreeData<OmCellText*>;

// Returns a text as a nested composite, or null if it is none. This file walks nested composites
// itself, because they may be deeper than the stack.
const OmComposite* Nested(const OmCellText* text) {
  return text != nullptr && typeid(*text) == typeid(OmComposite)
             ? static_cast<const OmComposite*>(text)
             : nullptr;
}

// One step of a walk over a composite and its nested composites: the text of a record, or null,
// with the record's depth in its own tree. A nested composite is followed by its own parts, then by
// a Part with `end`.
struct Part {
  unsigned int level;
  bool end;
  const OmCellText* text;
  // The range of its text in Parts::text.
  unsigned long from;
  unsigned long to;
};

struct Parts {
  std::vector<Part> list;
  std::string text;

  [[nodiscard]] std::string_view TextOf(const Part& part) const {
    return std::string_view(text).substr(part.from, part.to - part.from);
  }
};

Parts PartsOf(const OmComposite& composite) {
  constexpr unsigned long kOwn = ~0UL;
  // A record, and the index of its next child; kOwn if its own text is next.
  struct Step {
    const Record* record;
    unsigned int level;
    unsigned long next;
    unsigned long nested;  // index of the nested composite whose root this is, or kOwn
  };
  Parts parts;
  std::vector<Part>& list = parts.list;
  std::vector<Step> way{{&composite.Tree(), 0, kOwn, kOwn}};
  while (!way.empty()) {
    Step& step = way.back();
    const Record& record = *step.record;
    if (step.next == kOwn) {
      step.next = 0;
      const unsigned long from = parts.text.size();
      const OmCellText* const text = record.Data();
      const OmComposite* const nested = Nested(text);
      if (text != nullptr && nested == nullptr) {
        parts.text += text->Text();
      }
      list.push_back({step.level, false, text, from, parts.text.size()});
      if (nested != nullptr) {
        way.push_back({&nested->Tree(), 0, kOwn, list.size() - 1});
      }
    } else if (step.next != record.Size()) {
      const Record& child = record.Children()[step.next++];
      way.push_back({&child, step.level + 1, kOwn, kOwn});
    } else {
      if (step.nested != kOwn) {
        list[step.nested].to = parts.text.size();
        list.push_back({0, true, nullptr, parts.text.size(), parts.text.size()});
      }
      way.pop_back();
    }
  }
  return parts;
}

// Compares part `i` of two composites whose texts and earlier parts are equal. A list that ends
// here, a part without a text and a part of lower depth come first.
short ComparePart(const Parts& a, const Parts& b, unsigned long i) {
  if (i >= a.list.size() || i >= b.list.size()) {
    return static_cast<short>((i < a.list.size()) - (i < b.list.size()));
  }
  const Part& one = a.list[i];
  const Part& other = b.list[i];
  if (one.end || other.end) {
    return static_cast<short>(other.end - one.end);
  }
  if (one.level != other.level) {
    return one.level < other.level ? -1 : 1;
  }
  if (one.text == nullptr || other.text == nullptr) {
    return static_cast<short>((one.text != nullptr) - (other.text != nullptr));
  }
  if (Nested(one.text) == nullptr || Nested(other.text) == nullptr) {
    return one.text->Compare(*other.text);
  }
  // The parts of the two nested composites follow in the lists. Their texts are equal if their
  // ranges are, because the texts of the two composites are.
  if (one.from == other.from && one.to == other.to) {
    return 0;
  }
  const int order = a.TextOf(one).compare(b.TextOf(other));
  return static_cast<short>((order > 0) - (order < 0));
}

// Copies the texts and the tree of `from`. If it throws, `to` is a valid composite.
void CloneInto(OmComposite& to, const OmComposite& from, OmMemoryRegion* region) {
  // Records that are still to be copied, with their copies. The copies do not move, because room is
  // reserved.
  std::vector<std::pair<const Record*, Record*>> todo{{&from.Tree(), &to.Tree()}};
  while (!todo.empty()) {
    const auto [source, copy] = todo.back();
    todo.pop_back();
    if (const OmComposite* const nested = Nested(source->Data()); nested != nullptr) {
      auto* const made = new (region) OmComposite(region);
      copy->Data() = made;
      if (nested->hasMeta()) {
        made->setMeta(nested->getMeta());
      }
      todo.push_back({&nested->Tree(), &made->Tree()});
    } else if (source->Data() != nullptr) {
      copy->Data() = source->Data()->Clone(region);
    }
    copy->Children().reserve(source->Size());
    for (const Record& child : source->Children()) {
      OmCellText* none = nullptr;
      copy->Child(none);
      todo.push_back({&child, &copy->Children().back()});
    }
  }
}

// Deletes the texts of a tree and of its nested composites, without allocation and without
// recursion. It returns to a parent by the links; the root of a nested tree is linked to the record
// that holds the composite. A record whose text was deleted has null.
void DeleteTexts(Record& root) noexcept {
  Record* record = &root;
  for (;;) {
    if (Nested(record->Data()) != nullptr) {
      Record& below = static_cast<OmComposite*>(record->Data())->Tree();
      below.Parent(record);
      record = &below;
      continue;
    }
    delete record->Data();
    record->Data() = nullptr;
    if (record->Size() != 0) {
      record->Relocate(false);
      record = record->Children().begin();
      continue;
    }
    // Go up to the next record that has something left to delete.
    for (bool left = false; !left;) {
      if (record == &root) {
        return;
      }
      Record* const above = record->Parent();
      if (above->Data() != nullptr) {
        // `record` was the root of the nested composite of `above`. All texts of that one are
        // deleted.
        delete above->Data();
        above->Data() = nullptr;
        record = above;
        left = true;
      } else if (record + 1 != above->Children().end()) {
        ++record;
        left = true;
      } else {
        record = above;
      }
    }
  }
}

}  // namespace

OmComposite::OmComposite(OmMemoryRegion* region) : OmCellText(region), tree(nullptr, region) {}

// The delegated constructor has completed the composite: if copying throws, its destructor runs.
OmComposite::OmComposite(const OmComposite& other, OmMemoryRegion* region) : OmComposite(region) {
  if (other.hasMeta()) {
    setMeta(other.getMeta());
  }
  CloneInto(*this, other, region);
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
  const Parts a = PartsOf(*this);
  const Parts b = PartsOf(static_cast<const OmComposite&>(other));
  short parts = 0;
  for (unsigned long i = 0; parts == 0 && i < std::max(a.list.size(), b.list.size()); ++i) {
    parts = ComparePart(a, b, i);
  }
  return parts;
}

unsigned long OmComposite::Kind() const noexcept {
  return 7;
}

std::string OmComposite::Text() const {
  return PartsOf(*this).text;
}

void OmComposite::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}
