// OmOutputPart, the base of every item of an output document, and the visitors that distinguish
// their kinds.
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
  // destroyed ignores what they throw. A class that has an item as a member and a base with a
  // noexcept destructor has to declare its own destructor noexcept.
  virtual ~OmOutputPart() noexcept(false);

  // Calls the Visit overload of the item's own kind.
  virtual void Accept(Visitor& v) = 0;
  // The same for a const item. Calls the function above, which does not change the item.
  void Accept(ConstVisitor& v) const;

  // Owned by the item. Null only after a failed SetTitle. In UTF-8, except the title that the
  // constructor of an item with a code page has converted.
  [[nodiscard]] OmCellText* Title() noexcept { return title; }
  [[nodiscard]] const OmCellText* Title() const noexcept { return title; }
  // Stores a clone of `title`. The old title is deleted first, so `title` must not be the item's
  // own. If the clone fails, the item has no title.
  void SetTitle(const OmCellText& title);

  // A word (0 at first) and two flags (true at first) for the front end, which defines their
  // meaning. The library only stores them.
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

// Visits a const item, with the same defaults. A class of its own, because new functions in Visitor
// would break the binary interface of compiled visitors.
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
