#include "backend/tables/om/Interactive.h"

#include "backend/tables/om/PayloadData.h"

struct OmInteractive::Data {
  Data(const std::string& localeCodePage_, long long interactiveId_)
      : localeCodePage(localeCodePage_), interactiveId(interactiveId_) {}

  std::string localeCodePage;
  std::vector<std::string> geoJSONFileNames;
  std::vector<std::string> geoJSONContents;
  std::string interactiveJSON;
  std::string procedureName;
  std::string jsonPath;
  std::string options;
  long long interactiveId;
};

OmInteractive::OmInteractive(const OmCellText& title_, const std::string& localeCodePage,
                             long long interactiveId)
    : OmOutputPart(title_), _my(new Data(localeCodePage, interactiveId)) {
  ConvertTitle(*this, localeCodePage);
}

OmInteractive::~OmInteractive() = default;

void OmInteractive::Accept(Visitor& v) {
  v.Visit(*this);
}

const std::string& OmInteractive::LocaleCodePage() const {
  return _my->localeCodePage;
}

long long OmInteractive::getInteractiveId() const {
  return _my->interactiveId;
}

void OmInteractive::addGeoJSONFileName(const char* name, unsigned int length) {
  _my->geoJSONFileNames.emplace_back(name, length);
}

void OmInteractive::addGeoJSONFileContent(const char* data, unsigned int length) {
  AddFileContent(_my->geoJSONContents, _my->geoJSONFileNames, data, length);
}

bool OmInteractive::hasGeoJSONFile() const {
  return !_my->geoJSONFileNames.empty();
}

const std::vector<std::string>& OmInteractive::getGeoJSONFileNames() const {
  return _my->geoJSONFileNames;
}

const std::vector<std::string>& OmInteractive::getGeoJSONContent() const {
  return _my->geoJSONContents;
}

void OmInteractive::setInteractiveJSON(const char* data, unsigned int length) {
  _my->interactiveJSON.append(data, length);
}

const std::string& OmInteractive::getInteractiveJSON() const {
  return _my->interactiveJSON;
}

void OmInteractive::setProcedureName(const std::string& name) {
  _my->procedureName = name;
}

const std::string& OmInteractive::getProcedureName() const {
  return _my->procedureName;
}

void OmInteractive::setJSONPath(const std::string& path) {
  _my->jsonPath = path;
}

std::string& OmInteractive::getJSONPath() {
  return _my->jsonPath;
}

const std::string& OmInteractive::getJSONPath() const {
  return _my->jsonPath;
}

void OmInteractive::setOptions(const std::string& options) {
  _my->options = options;
}

std::string& OmInteractive::getOptions() {
  return _my->options;
}

const std::string& OmInteractive::getOptions() const {
  return _my->options;
}
