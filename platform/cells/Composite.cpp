#include "platform/cells/Composite.h"

#include <algorithm>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

using Record = OmVectorTreeData<OmCellText*>;

// Returns a text as a composite that this file takes apart itself, or null: composites that hold
// composites may be deeper than the stack.
const OmComposite* Nested(const OmCellText* text) {
  return text != nullptr && typeid(*text) == typeid(OmComposite)
             ? static_cast<const OmComposite*>(text)
             : nullptr;
}

// What a walk over a composite and those in it meets: the text of a record with the record's depth
// in its own tree, null where there is none. The parts of a composite follow it, and then its end.
struct Part {
  unsigned int level;
  bool end;
  const OmCellText* text;
  // The part of the whole text.
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
  // A record, and the child that comes next; its own text comes first.
  struct Step {
    const Record* record;
    unsigned int level;
    unsigned long next;
    unsigned long nested;  // the part of the composite whose root this is
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

// A part that ends its list, has no text or stands higher comes first. What stands in front of the
// two is equal, and so are the whole texts.
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
  // Their parts follow.
  if (one.from == other.from && one.to == other.to) {
    return 0;
  }
  const int order = a.TextOf(one).compare(b.TextOf(other));
  return static_cast<short>((order > 0) - (order < 0));
}

// Copies the texts and the tree of `from`. What is there when it fails is a valid composite.
void CloneInto(OmComposite& to, const OmComposite& from, OmMemoryRegion* region) {
  // Records that are still to be copied, with their copies. Those do not move, for there is room.
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

// Deletes the texts of a tree, and those of composites in it one by one. Takes neither memory nor
// stack: the way back is in the links, and that of the root of a nested tree leads to the record
// that holds the composite. A record without a text is one whose own text is deleted.
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
    // Up to where something is left.
    for (bool left = false; !left;) {
      if (record == &root) {
        return;
      }
      Record* const above = record->Parent();
      if (above->Data() != nullptr) {
        // All texts of the composite there are gone.
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

// The composite is complete before anything is copied: where copying fails, it is destroyed as it
// is.
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
