// Names of PCI devices.

#include <string>

#include "gtest/gtest.h"
#include "kqsupt.h"
#include "support/guarded.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::Guarded;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

class PciNames : public testing::Test {
 protected:
  // "status: vendor / device"; the sizes must be those of the names.
  std::string find(uint32_t vendor, uint32_t device, uint32_t sub_vendor = 0,
                   uint32_t sub_device = 0, uint32_t capacity = 64) {
    const Guarded<char> vendor_name(capacity);
    const Guarded<char> device_name(capacity);
    uint32_t vendor_size = capacity;
    uint32_t device_size = capacity;
    const SMStatus status =
        SMReadPCIDevFile(vendor, device, sub_vendor, sub_device, path_.c_str(), vendor_name.data(),
                         &vendor_size, device_name.data(), &device_size);
    const std::string names[] = {vendor_name.data(), device_name.data()};
    EXPECT_EQ(vendor_size, names[0].size());
    EXPECT_EQ(device_size, names[1].size());
    return std::to_string(status) + ": " + names[0] + " / " + names[1];
  }

  Scratch scratch_;
  std::string path_ = scratch_.file("pci.txt");
};

constexpr char kDevices[] =
    "; devices\n"
    "V\t8086\tIntegrated\n"
    "D\t1229\tEther\n"
    "O\t1014\tBoard maker\n"
    "S\t005C\tBoard\n"
    "O\t1015\tOther maker\r\n"
    "S\t005C\tOther board ; comment\n"
    "D\t1230\tNext\n"
    "S\t005C\tBoard of the maker before\n"
    "v\t\t9005\t\tAdapters\textra\n"
    "d\t10\tShort\n"
    "V\t8086\tAgain\nD\t7777\tToo late\n";

TEST_F(PciNames, AreThoseOfVendorAndDevice) {
  put(path_, kDevices);
  EXPECT_EQ(find(0x8086, 0x1229), "0: Integrated / Ether");
  EXPECT_EQ(find(0x8086, 0x1230), "0: Integrated / Next");
  EXPECT_EQ(find(0x9005, 0x10), "0: Adapters / Short");
}

TEST_F(PciNames, ABoardOrItsMakerGivesTheDeviceItsName) {
  put(path_, kDevices);
  EXPECT_EQ(find(0x8086, 0x1229, 0x1014, 0x5C), "0: Integrated / Board");
  EXPECT_EQ(find(0x8086, 0x1229, 0x1014, 0x5D), "0: Integrated / Board maker");
  EXPECT_EQ(find(0x8086, 0x1229, 0x1015, 0x5C), "0: Integrated / Other board ");
  EXPECT_EQ(find(0x8086, 0x1229, 0x1015, 0), "0: Integrated / Other maker");
}

TEST_F(PciNames, AMakerAppliesUntilTheNextOneOrTheNextVendor) {
  put(path_, kDevices);
  EXPECT_EQ(find(0x8086, 0x1230, 0x1015, 0x5C), "0: Integrated / Board of the maker before");
  EXPECT_EQ(find(0x8086, 0x1230, 0x1014, 0x5C), "0: Integrated / Next");
  put(path_, "V\t1\tfirst\nD\t1\tdevice\nO\t3\tmaker\nV\t2\tsecond\nD\t1\tother\nS\t4\tboard\n");
  EXPECT_EQ(find(2, 1, 3, 4), "0: second / other");
}

TEST_F(PciNames, AVendorEndsWhatTheDeviceBeforeAppliesTo) {
  put(path_, "V\t1\tfirst\nD\t7\tdevice\nV\t2\tsecond\nO\t3\tmaker\nD\t7\tother\n");
  EXPECT_EQ(find(2, 7, 3, 0), "0: second / other");
}

TEST_F(PciNames, ABoardIsComparedIn16Bits) {
  put(path_, "V\t1\tvendor\nD\t2\tdevice\nO\t3\tmaker\nS\t4\tboard\n");
  EXPECT_EQ(find(1, 2, 3, 4), "0: vendor / board");
  EXPECT_EQ(find(1, 2, 3, 0x10004), "0: vendor / maker");
  EXPECT_EQ(find(1, 2, 0x10003, 4), "0: vendor / device");
}

TEST_F(PciNames, WhatNoLineHasGivenYetIsFFFF) {
  put(path_, "S\t4\tnobody's\nV\t1\tvendor\nO\t3\tmaker\n");
  EXPECT_EQ(find(1, 0xFFFF, 3, 4), "7: vendor / maker");
  EXPECT_EQ(find(1, 0, 3, 4), "7: vendor / ");
  EXPECT_EQ(find(0xFFFF, 0xFFFF, 0xFFFF, 4), "7:  / nobody's");
  put(path_, "V\t1\tvendor\nD\t2\tdevice\nS\t4\tboard\n");
  EXPECT_EQ(find(1, 2, 0xFFFF, 4), "0: vendor / board");
  EXPECT_EQ(find(1, 2, 0, 4), "0: vendor / device");
}

TEST_F(PciNames, ALineOfMoreThan8450BytesIsSeveral) {
  put(path_, "V\t1\tvendor\n" + std::string(8450, ';') + "D\t2\tdevice\n");
  EXPECT_EQ(find(1, 2), "0: vendor / device");
  put(path_, "V\t1\tvendor\n" + std::string(8449, ';') + "D\t2\tdevice\n");
  EXPECT_EQ(find(1, 2), "7: vendor / ");
}

TEST_F(PciNames, AFileMayHoldAnything) {
  using std::string_literals::operator""s;
  for (const std::string& text : {""s, "\n"s, "\t\t\t\t"s, std::string(100000, '\t'), "\0\0"s,
                                  "V\t1\t\0vendor"s, std::string(100000, 'V')}) {
    put(path_, text);
    EXPECT_EQ(find(1, 2), "7:  / ");
  }
  put(path_,
      "V\t1\tvendor\n" + std::string(20, '\t') + "x\n" + "D\t2\tdevice\tmore\tthan\tis\tread");
  EXPECT_EQ(find(1, 2), "0: vendor / device");
}

TEST_F(PciNames, ADirectoryOrAPipeHasNone) {
  ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
  EXPECT_EQ(find(1, 2), "7:  / ");
  ASSERT_EQ(rmdir(path_.c_str()), 0);
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(find(1, 2), "7:  / ");
}

TEST_F(PciNames, TheSearchEndsAtTheVendorBehindTheWantedOne) {
  put(path_, kDevices);
  EXPECT_EQ(find(0x8086, 0x7777), "7: Integrated / ");
  EXPECT_EQ(find(0x8086, 0x10), "7: Integrated / ");
  EXPECT_EQ(find(0x1234, 0x10), "7:  / ");
}

TEST_F(PciNames, LinesThatAreNoRecordsAreSkipped) {
  put(path_,
      "V\t1\nV 1 x\nV\tzz\tx\nX\t1\tx\nVV\t1\tx\n\t V\t1\tx\nV\t1\t;x\nV\t0001F\tfour "
      "digits\nD\t2\tdevice");
  EXPECT_EQ(find(1, 2), "0: four digits / device");
}

TEST_F(PciNames, NamesAreCutToTheirRoom) {
  put(path_, "V\t1\tvendor\nD\t2\tdevice\n");
  EXPECT_EQ(find(1, 2, 0, 0, 1), "0:  / ");
  EXPECT_EQ(find(1, 2, 0, 0, 4), "0: ven / dev");
  EXPECT_EQ(find(1, 2, 0, 0, 6), "0: vendo / devic");
  EXPECT_EQ(find(1, 2, 0, 0, 7), "0: vendor / device");
}

TEST_F(PciNames, AMissingFileIsNotFound) {
  EXPECT_EQ(find(1, 2), "7:  / ");
}

TEST_F(PciNames, NeedAllPointersAndRoom) {
  put(path_, "V\t1\tvendor\nD\t2\tdevice\n");
  char vendor[8] = "~";
  char device[8] = "~";
  const auto call = [&](const char* path, char* v, uint32_t v_size, char* d, uint32_t d_size) {
    uint32_t sizes[2] = {v_size, d_size};
    EXPECT_EQ(SMReadPCIDevFile(1, 2, 0, 0, path, v, &sizes[0], d, &sizes[1]),
              SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(sizes[0], 0U);
    EXPECT_EQ(sizes[1], 0U);
  };
  call(nullptr, vendor, 8, device, 8);
  call("", vendor, 8, device, 8);
  call(path_.c_str(), nullptr, 8, device, 8);
  call(path_.c_str(), vendor, 0, device, 8);
  call(path_.c_str(), vendor, 8, nullptr, 8);
  call(path_.c_str(), vendor, 8, device, 0);
  uint32_t size = 8;
  EXPECT_EQ(SMReadPCIDevFile(1, 2, 0, 0, path_.c_str(), vendor, nullptr, device, &size), 271U);
  EXPECT_EQ(size, 0U);
  size = 8;
  EXPECT_EQ(SMReadPCIDevFile(1, 2, 0, 0, path_.c_str(), vendor, &size, device, nullptr), 271U);
  EXPECT_EQ(size, 0U);
  EXPECT_STREQ(vendor, "~");
  EXPECT_STREQ(device, "~");
}

}  // namespace
