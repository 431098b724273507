#include "DictionaryRecords.h"

namespace zeldict {

namespace {

// The loader's observation steps that report one record each, and the record's kind. The
// loader's steps (after kDictionaryFilesFirst) carry the record in text {class or interface name,
// interface name, library}, guid {identifier}, file and line.
bool RecordKindOf(zelsysts::Step step, DictionaryRecord::Kind* kind) {
  (void)step;
  (void)kind;
  return false;  // no loader step reports records in this build
}

const char* OrEmpty(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace

void DictionaryRecords::Note(const zelsysts::Observation& observation) {
  DictionaryRecord record;
  record.kind = DictionaryRecord::kClassInterface;
  if (!RecordKindOf(observation.step, &record.kind)) return;
  const bool interfaceId = record.kind == DictionaryRecord::kInterfaceId;
  (interfaceId ? record.interface_name : record.class_name) = OrEmpty(observation.text[0]);
  if (record.kind == DictionaryRecord::kClassInterface) {
    record.interface_name = OrEmpty(observation.text[1]);
  }
  record.library = OrEmpty(observation.text[2]);
  if (observation.guid[0] != nullptr) record.guid = *observation.guid[0];
  record.file = OrEmpty(observation.file);
  record.line = observation.line;
  records_.push_back(record);
}

const DictionaryRecord* DictionaryRecords::ClassInterface(const std::string& className,
                                                          const std::string& interfaceName) const {
  for (const DictionaryRecord& record : records_) {
    if (record.kind == DictionaryRecord::kClassInterface && record.class_name == className &&
        record.interface_name == interfaceName) {
      return &record;
    }
  }
  return nullptr;
}

const DictionaryRecord* DictionaryRecords::InterfaceNamed(const std::string& interfaceName) const {
  for (const DictionaryRecord& record : records_) {
    if (record.kind == DictionaryRecord::kInterfaceId && record.interface_name == interfaceName) {
      return &record;
    }
  }
  return nullptr;
}

const DictionaryRecord* DictionaryRecords::InterfaceWithId(const _GUID& iid) const {
  for (const DictionaryRecord& record : records_) {
    if (record.kind == DictionaryRecord::kInterfaceId && record.guid == iid) return &record;
  }
  return nullptr;
}

const DictionaryRecord* DictionaryRecords::ClassWithId(const _GUID& clsid) const {
  for (const DictionaryRecord& record : records_) {
    if (record.kind == DictionaryRecord::kClassId && record.guid == clsid) return &record;
  }
  return nullptr;
}

const DictionaryRecord* DictionaryRecords::ClassLibrary(const std::string& className) const {
  for (const DictionaryRecord& record : records_) {
    if (record.kind == DictionaryRecord::kClassId && record.class_name == className &&
        !record.library.empty()) {
      return &record;
    }
  }
  const DictionaryRecord* line = ClassInterface(className, "CreateInterface");
  return line != nullptr && !line->library.empty() ? line : nullptr;
}

}  // namespace zeldict
