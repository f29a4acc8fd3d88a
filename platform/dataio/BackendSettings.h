// BackendSettings, the settings of the back end's session that tables need.

#ifndef PLATFORM_DATAIO_BACKENDSETTINGS_H
#define PLATFORM_DATAIO_BACKENDSETTINGS_H

#include <limits>
#include <string>

#include "platform/Export.h"

// A plain value. Default settings have no limit that a table could reach.
class OM_PLATFORM_API BackendSettings {
 public:
  BackendSettings();
  BackendSettings(const BackendSettings& other);
  BackendSettings& operator=(const BackendSettings& other);
  ~BackendSettings();

  // Cells that a table may hold before it refuses more.
  [[nodiscard]] long long getMaxCells() const noexcept { return maxCells; }
  void setMaxCells(long long cells) noexcept { maxCells = cells; }
  // Whether the texts of tables are tied to encoding trackers.
  [[nodiscard]] bool getFastTables() const noexcept { return fastTables; }
  void setFastTables(bool fast) noexcept { fastTables = fast; }
  [[nodiscard]] bool getUnicode() const noexcept { return unicode; }
  void setUnicode(bool value) noexcept { unicode = value; }
  [[nodiscard]] const std::string& getLocale() const noexcept { return locale; }
  void setLocale(const std::string& name);

 private:
  // First, because members are assigned in this order and only this assignment can fail: then
  // nothing has changed yet.
  std::string locale;
  long long maxCells = std::numeric_limits<long long>::max();
  bool fastTables = false;
  bool unicode = true;
};

#endif
