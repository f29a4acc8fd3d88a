// OmFootnote, the record of one footnote: its text, an optional marker and a count of its uses.
//
// Copying clones both texts. A vector of footnotes moves them as bytes when it grows, so pointers
// to the texts stay valid while pointers to the record do not.

#ifndef BACKEND_TABLES_OM_FOOTNOTE_H
#define BACKEND_TABLES_OM_FOOTNOTE_H

#include "backend/tables/om/Export.h"

class OmCellText;
class OmMemoryRegion;

// Owns its texts, which live in its region (null is the default heap). The region has to outlive
// it. There is no assignment.
//
// A setter deletes the old text before it clones the new one, so it must not be called with the
// footnote's own text. If the clone fails, the text is null.
class OM_API OmFootnote {
 public:
  // Stores clones of `text` and `marker`, each of which may be null. The use count is 0.
  OmFootnote(const OmCellText* text, const OmCellText* marker, OmMemoryRegion* region);
  // Copies into the region of `other`.
  OmFootnote(const OmFootnote& other);
  OmFootnote& operator=(const OmFootnote&) = delete;
  ~OmFootnote();

  // Null only in a footnote that was constructed without a text, or after a failed setter.
  [[nodiscard]] OmCellText* Text() noexcept { return text; }
  [[nodiscard]] const OmCellText* Text() const noexcept { return text; }
  void Text(const OmCellText& t);

  // Null if the footnote has no marker of its own.
  [[nodiscard]] OmCellText* Marker() const noexcept { return marker; }
  void Marker(const OmCellText* m);

  // A negative count has a meaning to callers and is stored unchanged.
  [[nodiscard]] int UseCount() const noexcept { return useCount; }
  void UseCount(int count) noexcept { useCount = count; }
  // Wraps on overflow.
  void AddUse() noexcept { useCount = static_cast<int>(static_cast<unsigned int>(useCount) + 1U); }

  // Compares only the texts; neither may be null.
  [[nodiscard]] bool operator==(const OmFootnote& other) const;

 private:
  OmFootnote(const OmCellText* text, const OmCellText* marker, OmMemoryRegion* region,
             int useCount);

  OmMemoryRegion* region;
  OmCellText* text;
  OmCellText* marker;
  int useCount;
};

#endif
