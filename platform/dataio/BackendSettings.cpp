#include "platform/dataio/BackendSettings.h"

BackendSettings::BackendSettings() = default;
BackendSettings::BackendSettings(const BackendSettings& other) = default;
BackendSettings& BackendSettings::operator=(const BackendSettings& other) = default;
BackendSettings::~BackendSettings() = default;

void BackendSettings::setLocale(const std::string& name) {
  locale = name;
}
