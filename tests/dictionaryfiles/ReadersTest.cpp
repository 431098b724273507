// The three line readers: what each accepts, what it enters, and its messages byte for byte.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/ClsidTable.h"
#include "dictionaryfiles/DictionaryReaders.h"
#include "dictionaryfiles/IidTable.h"

namespace {

using zeltest::StderrCapture;

const char kPath[] = "/dicts/x";
const char kIid[] = "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5}";
const char kOtherIid[] = "{F5E4D3C2-B1A0-9F8E-7D6C-5B4A3F2E1D0C}";

// A line's fields in writable storage, as the loader hands them over.
class Line {
 public:
  Line(std::initializer_list<const char*> words) {
    for (const char* w : words) {
      storage_.emplace_back(w, w + std::char_traits<char>::length(w) + 1);
    }
  }
  // Pointers into this object's own storage (rebuilt on each call, so copies stay valid).
  char** fields() {
    for (int i = 0; i < 5; ++i) {
      fields_[i] = i < count() ? storage_[static_cast<size_t>(i)].data() : nullptr;
    }
    return fields_;
  }
  int count() const { return static_cast<int>(storage_.size()); }

 private:
  std::vector<std::vector<char>> storage_;
  char* fields_[5];
};

HRESULT Feed(ZELSysTSDictionaryReader& reader, Line line, int number = 7) {
  return reader.ProcessLine(line.fields(), line.count(), kPath, number);
}

TEST(DicReader, ShapesThatAreRejected) {
  ZELSysTSDicReader reader;
  const Line rejected[] = {
      {"Vehicle"},
      {"Vehicle", "IVehicle"},
      {"Vehicle", "IVehicle", "VehicleImpl", "ITFLEAF"},
      {"Vehicle", "IVehicle", "VehicleImpl", "itfleaf", "IVehicleLeaf"},
      {"Vehicle", "IVehicle", "VehicleImpl", "EXTENDEDBY", "Ext"},
  };
  for (Line line : rejected) {
    StderrCapture err;
    EXPECT_EQ(E_FAIL, Feed(reader, line, 12));
    EXPECT_EQ("Problem reading dico : /dicts/x line 12\n", err.Take());
  }
  EXPECT_EQ(nullptr, DicoStore::FindByNames("Vehicle", "IVehicle"));
}

TEST(DicReader, AcceptedLinesFillTheStore) {
  ZELSysTSDicReader reader;
  StderrCapture err;
  EXPECT_EQ(S_OK, Feed(reader, {"Vehicle", "IVehicle", "libVehicleImpl"}));
  EXPECT_EQ(S_OK, Feed(reader, {"Vehicle", "IPrintable", "VehicleImpl", "ITFLEAF", "ILeaf"}));
  EXPECT_EQ(S_OK, Feed(reader, {"Vehicle", "IPersist", "PersistImpl", "EXTENDED_BY", "Ext"}));
  EXPECT_EQ("", err.Take());

  const DicoEntry* plain = DicoStore::FindByNames("Vehicle", "IVehicle");
  ASSERT_NE(nullptr, plain);
  EXPECT_STREQ("VehicleImpl", plain->library_name);  // the store cuts "lib"
  EXPECT_EQ(nullptr, plain->itf_leaf);
  EXPECT_EQ(nullptr, plain->extended_by);
  EXPECT_EQ(nullptr, plain->Creator());

  const DicoEntry* leaf = DicoStore::FindByNames("Vehicle", "IPrintable");
  ASSERT_NE(nullptr, leaf);
  EXPECT_STREQ("ILeaf", leaf->itf_leaf);
  EXPECT_EQ(nullptr, leaf->extended_by);

  const DicoEntry* ext = DicoStore::FindByNames("Vehicle", "IPersist");
  ASSERT_NE(nullptr, ext);
  EXPECT_STREQ("PersistImpl", ext->library_name);
  EXPECT_EQ(nullptr, ext->itf_leaf);
  EXPECT_STREQ("Ext", ext->extended_by);
}

TEST(DicReader, AConflictInTheStoreDoesNotRejectTheLine) {
  ZELSysTSDicReader reader;
  StderrCapture err;
  EXPECT_EQ(S_OK, Feed(reader, {"Vehicle", "IVehicle", "LibA"}));
  EXPECT_EQ(S_OK, Feed(reader, {"Vehicle", "IVehicle", "LibB"}));
  EXPECT_EQ("Problem allocating structure dico\n", err.Take());  // the store's own line
  EXPECT_STREQ("LibA", DicoStore::FindByNames("Vehicle", "IVehicle")->library_name);
}

TEST(IidReader, MessagesForShapeAndText) {
  ZELSysTSIidReader reader;
  {
    StderrCapture err;
    EXPECT_EQ(E_FAIL, Feed(reader, {kIid}, 3));
    EXPECT_EQ(E_FAIL, Feed(reader, {kIid, "IVehicle", "#comment"}, 4));
    EXPECT_EQ(
        "Error in IId dictionary /dicts/x line 3\n"
        "Error in IId dictionary /dicts/x line 4\n",
        err.Take());
  }
  {
    StderrCapture err;
    EXPECT_EQ(E_FAIL, Feed(reader, {"0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5", "IVehicle"}, 5));
    EXPECT_EQ(
        "Error in dictionary /dicts/x line 5\nInvalid iid "
        ":0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5\n\n",
        err.Take());
  }
  EXPECT_EQ(nullptr, IidTable::FindIid("IVehicle"));
}

TEST(IidReader, RepeatsAreSilentAndConflictsExplained) {
  ZELSysTSIidReader reader;
  {
    StderrCapture err;
    EXPECT_EQ(S_OK, Feed(reader, {kIid, "IVehicle"}));
    EXPECT_EQ(S_OK, Feed(reader, {kIid, "IVehicle"}));
    EXPECT_EQ(S_OK, Feed(reader, {kOtherIid, "IOther"}));
    EXPECT_EQ("", err.Take());
  }
  ASSERT_NE(nullptr, IidTable::FindIid("IVehicle"));
  {
    StderrCapture err;
    EXPECT_EQ(E_FAIL, Feed(reader, {kIid, "ITruck"}, 8));
    EXPECT_EQ(
        "Error in dictionary /dicts/x line 8\n"
        "Can not add interface '{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5} ITruck'\n"
        "The iid is already defined with interface name 'IVehicle'\n"
        "Check dictionaries.\n\n",
        err.Take());
  }
  {
    StderrCapture err;
    EXPECT_EQ(E_FAIL, Feed(reader, {"{00000000-0000-0000-C000-000000000046}", "IVehicle"}, 9));
    EXPECT_EQ(
        "Error in dictionary /dicts/x line 9\n"
        "Can not add interface '{00000000-0000-0000-C000-000000000046} IVehicle'\n"
        "The interface name is already defined with another iid\n",
        err.Take());
  }
  {
    // Both an IID with another name and a name with another IID: the IID's name is reported.
    StderrCapture err;
    EXPECT_EQ(E_FAIL, Feed(reader, {kIid, "IOther"}, 10));
    EXPECT_EQ(
        "Error in dictionary /dicts/x line 10\n"
        "Can not add interface '{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5} IOther'\n"
        "The iid is already defined with interface name 'IVehicle'\n"
        "Check dictionaries.\n\n",
        err.Take());
  }
  EXPECT_STREQ("IVehicle", IidTable::FindName(*IidTable::FindIid("IVehicle")));
}

TEST(ClsidReader, MessagesForShapeAndText) {
  ZELSysTSClsidReader reader;
  StderrCapture err;
  EXPECT_EQ(E_FAIL, Feed(reader, {kIid}, 2));
  EXPECT_EQ(E_FAIL, Feed(reader, {kIid, "Vehicle", "VehicleImpl", "extra"}, 3));
  EXPECT_EQ(E_FAIL, Feed(reader, {"{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5}x", "Vehicle"}, 4));
  EXPECT_EQ(
      "Problem reading dico name /dicts/x line 2\n"
      "Problem reading dico name /dicts/x line 3\n"
      "Problem converting CLSID in /dicts/x line 4\n",
      err.Take());
}

TEST(ClsidReader, RepeatsAreSilentAndConflictsReported) {
  ZELSysTSClsidReader reader;
  {
    StderrCapture err;
    EXPECT_EQ(S_OK, Feed(reader, {kIid, "Vehicle"}));
    EXPECT_EQ(S_OK, Feed(reader, {kIid, "Vehicle", "VehicleImpl"}));
    EXPECT_EQ(S_OK, Feed(reader, {kOtherIid, "Truck", "libTruckImpl"}));
    EXPECT_EQ(S_OK, Feed(reader, {kOtherIid, "Truck"}));
    EXPECT_EQ("", err.Take());
  }
  {
    StderrCapture err;
    EXPECT_EQ(E_FAIL, Feed(reader, {kIid, "Car"}, 5));
    EXPECT_EQ(E_FAIL, Feed(reader, {kOtherIid, "Truck", "TruckImpl"}, 6));
    EXPECT_EQ(
        "Error in dictionary /dicts/x line 5\n"
        "Can not add class 'Car {0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5} (null)'\n"
        "Error in dictionary /dicts/x line 6\n"
        "Can not add class 'Truck {F5E4D3C2-B1A0-9F8E-7D6C-5B4A3F2E1D0C} TruckImpl'\n",
        err.Take());
  }
  _GUID clsid = {0x0C1D2E3F, 0x4A5B, 0x6C7D, {0x8E, 0x9F, 0xA0, 0xB1, 0xC2, 0xD3, 0xE4, 0xF5}};
  const ClsidEntry* vehicle = ClsidTable::Find(clsid);
  ASSERT_NE(nullptr, vehicle);
  EXPECT_STREQ("Vehicle", vehicle->class_name);
  EXPECT_EQ(nullptr, vehicle->library_name);
}

}  // namespace
