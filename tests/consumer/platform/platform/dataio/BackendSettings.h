#ifndef PLATFORM_DATAIO_BACKENDSETTINGS_H
#define PLATFORM_DATAIO_BACKENDSETTINGS_H

#include <string>

class BackendSettings {
 public:
  long long getMaxCells() const noexcept { return 1000000; }
  bool getFastTables() const noexcept { return false; }
  bool getUnicode() const noexcept { return true; }
  std::string getLocale() const { return ""; }
};

#endif
