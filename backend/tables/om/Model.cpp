#include "backend/tables/om/Model.h"

struct OmModel::Data {
  MODEL_TYPE modelType = kModelDefault;
  std::string pmml;
  std::string binaryDataStream;
  std::string pmmlContainer;
  std::string statXmlContainer;
};

OmModel::OmModel(const OmCellText& title_) : OmOutputPart(title_), _my(new Data) {}

OmModel::~OmModel() = default;

void OmModel::Accept(Visitor& v) {
  v.Visit(*this);
}

void OmModel::SetPMML(const char* data, unsigned int length) {
  _my->pmml.append(data, length);
}

void OmModel::SetBinaryDataStream(const char* data, unsigned int length) {
  _my->binaryDataStream.append(data, length);
}

void OmModel::SetPMMLContainer(const char* data, unsigned int length) {
  _my->modelType = kModelContainer;
  _my->pmmlContainer.append(data, length);
}

void OmModel::SetStatXMLContainer(const char* data, unsigned int length) {
  _my->modelType = kModelContainer;
  _my->statXmlContainer.append(data, length);
}

const std::string& OmModel::GetPMML() const {
  return _my->pmml;
}

const std::string& OmModel::GetBinaryDataStream() const {
  return _my->binaryDataStream;
}

const std::string& OmModel::GetPMMLContainer() const {
  return _my->pmmlContainer;
}

const std::string& OmModel::GetStatXMLContainer() const {
  return _my->statXmlContainer;
}

void OmModel::SetModelType(MODEL_TYPE type) {
  _my->modelType = type;
}

OmModel::MODEL_TYPE OmModel::GetModelType() const {
  return _my->modelType;
}
