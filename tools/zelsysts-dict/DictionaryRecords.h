// The dictionary's records as the library's loader reports them while it reads the files (one
// observation per record, with its file and line): what explain needs to name a class's library,
// an interface's identifier, and where a record was written.
#pragma once

#include <string>
#include <vector>

#include "ZELSysTSGuid.h"
#include "util/Observer.h"

namespace zeldict {

struct DictionaryRecord {
  enum Kind { kClassInterface, kInterfaceId, kClassId } kind = kClassInterface;
  std::string class_name;      // .dicts and .clsidts records
  std::string interface_name;  // .dicts and .iidts records
  std::string library;         // .dicts and .clsidts records; empty when none
  _GUID guid{};                // .iidts: the interface identifier; .clsidts: the class identifier
  std::string file;
  int line = 0;

  std::string Where() const { return file.empty() ? "" : file + ":" + std::to_string(line); }
};

class DictionaryRecords {
 public:
  // Keeps the record that a loader observation reports; other observations are ignored.
  void Note(const zelsysts::Observation& observation);

  size_t size() const { return records_.size(); }
  // The first record of each kind that the loader kept (a later duplicate does not replace it).
  const DictionaryRecord* ClassInterface(const std::string& className,
                                         const std::string& interfaceName) const;
  const DictionaryRecord* InterfaceNamed(const std::string& interfaceName) const;
  const DictionaryRecord* InterfaceWithId(const _GUID& iid) const;
  const DictionaryRecord* ClassWithId(const _GUID& clsid) const;
  // The record that names the library of a class's objects: its ".clsidts" record with a
  // library, else its "CreateInterface" line.
  const DictionaryRecord* ClassLibrary(const std::string& className) const;

 private:
  std::vector<DictionaryRecord> records_;
};

}  // namespace zeldict
