// What can be read of an object, as text: two objects show alike where no reader can tell them
// apart.

#ifndef TESTS_SUPPORT_SHOW_H
#define TESTS_SUPPORT_SHOW_H

#include <ios>
#include <iostream>
#include <locale>
#include <string>
#include <type_traits>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "platform/cells/CellTexts.h"

// Not through a stream: that would keep the failure of an allocation to itself.
template <typename Value>
std::string AsText(const Value& value) {
  if constexpr (std::is_convertible_v<Value, std::string>) {
    return value;
  } else {
    return std::to_string(+value);
  }
}

// Puts the standard output into a state that shows in every number a stream writes itself.
class OddStream {
 public:
  OddStream() { std::cout << std::hex << std::showbase << std::showpos << std::uppercase; }
  OddStream(const OddStream&) = delete;
  OddStream& operator=(const OddStream&) = delete;
  ~OddStream() {
    std::cout.flags(flags);
    std::cout.imbue(locale);
  }

 private:
  struct Groups : std::numpunct<char> {
    [[nodiscard]] std::string do_grouping() const override { return "\1"; }
  };

  std::ios_base::fmtflags flags = std::cout.flags();
  std::locale locale = std::cout.imbue(std::locale(std::locale::classic(), new Groups));
};

// Joins texts, numbers and flags.
template <typename... Values>
std::string Fields(const Values&... values) {
  return (std::string() + ... + (AsText(values) + "|"));
}

template <typename Sequence>
std::string ListOf(const Sequence& values) {
  std::string list;
  for (const auto& value : values) {
    list += AsText(value) + ",";
  }
  return list;
}

inline std::string Show(const OmCellText* text) {
  if (text == nullptr) {
    return "null";
  }
  const std::string shown = text->Text() + (text->getICUTracker() != nullptr ? "~" : "");
  return text->hasMeta()
             ? shown + Fields("{", text->getMeta().Style(), ListOf(text->getMeta().Footnotes()))
             : shown;
}

inline std::string Show(const OmFootnote& note) {
  return Fields(Show(note.Text()), Show(note.Marker()), note.UseCount());
}

inline std::string Show(const OmVector<OmFootnote>& notes) {
  std::string shown;
  for (const OmFootnote& note : notes) {
    shown += Show(note) + " ";
  }
  return shown;
}

inline std::string Show(const OmDimensionNode& node) {
  return Fields(Show(node.Text()), static_cast<long>(node.Subscript()), node.IsGroup(), node.Hide(),
                node.HideLabels(), node.SortOrder(), ListOf(node.ChildIndex()));
}

inline std::string Show(OmVectorTree<OmDimensionNode>::ConstNode node) {
  std::string shown = "(" + Show(*node);
  for (auto child = node.Begin(); child != node.End(); ++child) {
    shown += Show(child);
  }
  return shown + ")";
}

inline std::string Show(const OmDimension& dimension) {
  return Fields(dimension.NumCategories(), Show(dimension.Root()));
}

#endif
