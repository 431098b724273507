#include "DictionaryRecords.h"

namespace zeldict {

namespace {

// The loader's observation steps that report one record each, and the record's kind.
bool RecordKindOf(zelsysts::Step step, DictionaryRecord::Kind* kind) {
  switch (step) {
    case zelsysts::Step::kDictsRecord:
      *kind = DictionaryRecord::kClassInterface;
      return true;
    case zelsysts::Step::kIidRecord:
      *kind = DictionaryRecord::kInterfaceId;
      return true;
    case zelsysts::Step::kClsidRecord:
      *kind = DictionaryRecord::kClassId;
      return true;
    default:
      return false;
  }
}

const char* OrEmpty(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace

// Fields: .dicts {class, interface, library}; .iidts {text, name}; .clsidts {text, class,
// library}. Only the records the tables kept (added, or the same as one kept before).
void DictionaryRecords::Note(const zelsysts::Observation& observation) {
  DictionaryRecord record;
  if (!RecordKindOf(observation.step, &record.kind)) return;
  const long outcome = observation.value & 0xFF;
  if (outcome != zelsysts::kRecordAdded && outcome != zelsysts::kRecordSame) return;
  const char* const* text = observation.text;
  switch (record.kind) {
    case DictionaryRecord::kClassInterface:
      record.class_name = OrEmpty(text[0]);
      record.interface_name = OrEmpty(text[1]);
      record.library = OrEmpty(text[2]);
      break;
    case DictionaryRecord::kInterfaceId:
      record.interface_name = OrEmpty(text[1]);
      break;
    case DictionaryRecord::kClassId:
      record.class_name = OrEmpty(text[1]);
      record.library = OrEmpty(text[2]);
      break;
  }
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
