#ifndef PLATFORM_SUPPORT_ICUTRACKER_H
#define PLATFORM_SUPPORT_ICUTRACKER_H

#include <string>

class icuTracker {
 public:
  icuTracker(bool, const std::string&) {}
};

#endif
