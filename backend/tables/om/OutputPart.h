// OmOutputPart, the base of every item of an output document, and the visitor that tells the kinds
// apart.
//
// An item is a container: it draws nothing, writes nothing and does not know its place in a
// document.

#ifndef BACKEND_TABLES_OM_OUTPUTPART_H
#define BACKEND_TABLES_OM_OUTPUTPART_H

#include <cstdint>

#include "backend/tables/om/Export.h"

class OmCellText;
class OmChart;
class OmDendrix;
class OmHeading;
class OmInteractive;
class OmModel;
class OmPageTitle;
class OmPivotTable;
class OmProcedure;
class OmTextBlock;

// Items live on the ordinary heap. An output tree that holds an item owns it and deletes it through
// the virtual destructor. An item is used by one thread at a time.
class OM_API OmOutputPart {
 public:
  class Visitor;
  class ConstVisitor;

  OmOutputPart(const OmOutputPart&) = delete;
  OmOutputPart& operator=(const OmOutputPart&) = delete;
  // Destructors of items may throw, though the library's own do not: an output tree that is being
  // destroyed ignores what they throw. A class with an item as a member declares its own destructor
  // noexcept where its base asks for that.
  virtual ~OmOutputPart() noexcept(false);

  // Calls the Visit overload of the item's own kind.
  virtual void Accept(Visitor& v) = 0;
  // The same for an item that is only read. Goes through the function above, which changes no item.
  void Accept(ConstVisitor& v) const;

  // The item keeps the ownership. Never null, except after a failed SetTitle. In UTF-8, but for
  // what an item with a code page was made with.
  [[nodiscard]] OmCellText* Title() noexcept { return title; }
  [[nodiscard]] const OmCellText* Title() const noexcept { return title; }
  // Stores a clone of `title`. The old title is deleted first, so `title` must not be the item's
  // own; where the clone fails, the item is left without a title.
  void SetTitle(const OmCellText& title);

  // A word (0 at first) and two flags (true at first) for the front end, which gives them their
  // meaning. The library only keeps them.
  [[nodiscard]] std::uint64_t UserWord() const noexcept { return userWord; }
  void UserWord(std::uint64_t value) noexcept { userWord = value; }
  [[nodiscard]] bool FirstFlag() const noexcept { return firstFlag; }
  void FirstFlag(bool value) noexcept { firstFlag = value; }
  [[nodiscard]] bool SecondFlag() const noexcept { return secondFlag; }
  void SecondFlag(bool value) noexcept { secondFlag = value; }

 protected:
  // Stores a clone of `title`, made on the default heap.
  explicit OmOutputPart(const OmCellText& title);

 private:
  OmCellText* title;
  std::uint64_t userWord = 0;
  bool firstFlag = true;
  bool secondFlag = true;
};

// Visits an item by its kind. A visitor that overrides the seven pure overloads receives procedures
// as headings and page titles as text blocks.
class OM_API OmOutputPart::Visitor {
 public:
  virtual ~Visitor();
  virtual void Visit(OmPivotTable& part) = 0;
  virtual void Visit(OmProcedure& part);
  virtual void Visit(OmHeading& part) = 0;
  virtual void Visit(OmTextBlock& part) = 0;
  virtual void Visit(OmPageTitle& part);
  virtual void Visit(OmChart& part) = 0;
  virtual void Visit(OmDendrix& part) = 0;
  virtual void Visit(OmModel& part) = 0;
  virtual void Visit(OmInteractive& part) = 0;
};

// Visits an item that is only read, with the same defaults. A class of its own, so that the
// functions of Visitor, and their order, stay what visitors are compiled for.
class OM_API OmOutputPart::ConstVisitor {
 public:
  virtual ~ConstVisitor();
  virtual void Visit(const OmPivotTable& part) = 0;
  virtual void Visit(const OmProcedure& part);
  virtual void Visit(const OmHeading& part) = 0;
  virtual void Visit(const OmTextBlock& part) = 0;
  virtual void Visit(const OmPageTitle& part);
  virtual void Visit(const OmChart& part) = 0;
  virtual void Visit(const OmDendrix& part) = 0;
  virtual void Visit(const OmModel& part) = 0;
  virtual void Visit(const OmInteractive& part) = 0;
};

#endif
