// icuTracker, the encoding tracker that texts are tied to, so that their readers know the encoding.

#ifndef PLATFORM_SUPPORT_ICUTRACKER_H
#define PLATFORM_SUPPORT_ICUTRACKER_H

#include <string>

#include "platform/Export.h"

class OM_PLATFORM_API icuTracker {
 public:
  icuTracker(bool unicode_, const std::string& locale_);
  icuTracker(const icuTracker&) = delete;
  icuTracker& operator=(const icuTracker&) = delete;
  ~icuTracker();

  [[nodiscard]] bool Unicode() const noexcept { return unicode; }
  [[nodiscard]] const std::string& Locale() const noexcept { return locale; }

 private:
  bool unicode;
  std::string locale;
};

#endif
