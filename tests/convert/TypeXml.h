#pragma once

#include <initializer_list>
#include <string>

#include "korvat/base/BinaryUtils.h"
#include "korvat/base/Buffer.h"
#include "korvat/base/Value.h"
#include "korvat/types/TypeId.h"
#include "korvat/types/TypeManager.h"
#include "tests/TempCatalogue.h"

// Definitions of the tests' own types, put together from the elements of the catalogue's files.
namespace zavri::test {

inline std::string tag(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name + ">";
}

// --- What a member may state besides its kind ---

inline std::string arraySize(int elementCount) {
  return tag("array-size", std::to_string(elementCount));
}

inline std::string dynamicArray(int smallest, int largest) {
  return tag("array-min-size", std::to_string(smallest)) + arraySize(largest);
}

inline std::string scaling(int a, int b, int c) {
  return tag("scaling", tag("a", std::to_string(a)) + tag("b", std::to_string(b)) +
                            tag("c", std::to_string(c)));
}

inline std::string invalid(const std::string& raw) {
  return tag("invalid", raw);
}

// --- Members ---

inline std::string scalar(const std::string& ncType, const std::string& fields = "") {
  return tag("scalar", tag("nc-type", ncType) + fields);
}

inline std::string floating(const std::string& ncType, const std::string& fields = "") {
  return tag("float", tag("nc-type", ncType) + fields);
}

inline std::string bits(int offset, int width, const std::string& fields = "") {
  return tag("bitfield", tag("signed", "no") + tag("width", std::to_string(width)) +
                             tag("offset", std::to_string(offset)) + fields);
}

inline std::string signedBits(int offset, int width, const std::string& fields = "") {
  return tag("bitfield", tag("signed", "yes") + tag("width", std::to_string(width)) +
                             tag("offset", std::to_string(offset)) + fields);
}

inline std::string enumeration(const std::string& type, const std::string& fields = "") {
  return tag("enum", tag("ref", type) + fields);
}

inline std::string reference(const std::string& type) {
  return tag("ref", type);
}

struct NamedMember {
  std::string name;
  std::string xml;
  std::string fields = "";  // of the member element, such as an array size
};

inline std::string aggregate(const std::string& category,
                             std::initializer_list<NamedMember> members,
                             const std::string& fields) {
  std::string content;
  for (const NamedMember& member : members) {
    content += tag("member", member.xml + tag("p-name", member.name) + member.fields);
  }
  return "<aggregate cat='" + category + "'>" + tag("members", content) + fields + "</aggregate>";
}

inline std::string structure(std::initializer_list<NamedMember> members,
                             const std::string& fields = "") {
  return aggregate("struct", members, fields);
}

inline std::string unionOf(std::initializer_list<NamedMember> members,
                           const std::string& fields = "") {
  return aggregate("union", members, fields);
}

// --- Types ---

// A network variable type. `name` goes without its four letters: "_pair" is SNVT_pair.
inline std::string nvt(const std::string& name, const std::string& root) {
  return "<nvt id='" + name + "' idx='1'><p-name>SNVT" + name + "</p-name>" + root + "</nvt>";
}

inline std::string cpt(const std::string& name, const std::string& root) {
  return "<cpt id='" + name + "' idx='1'><p-name>SCPT" + name + "</p-name>" + root + "</cpt>";
}

struct NamedValue {
  int value;
  std::string name;
};

inline std::string enumt(const std::string& name, std::initializer_list<NamedValue> values) {
  std::string content;
  for (const NamedValue& item : values) {
    content += "<e-member id='" + item.name + "'>" + tag("value", std::to_string(item.value)) +
               "</e-member>";
  }
  return "<enumt id='" + name + "' idx='1'>" + tag("members", content) + "</enumt>";
}

// --- Raw values ---

inline base::Buffer bytesOf(const std::string& hex) {
  base::Buffer buffer;
  util::BinaryUtils::stringToBuffer(buffer, hex, 0);
  return buffer;
}

// --- A catalogue of types to refer to ---

inline std::string sharedEnums() {
  return enumt("power_t", {{-1, "PWR_NUL"}, {0, "PWR_OFF"}, {1, "PWR_ON"}}) +
         enumt("char_encoding_t", {{-1, "CE_NUL"}, {0, "CE_8"}, {1, "CE_16"}, {2, "CE_32"}});
}

inline std::string sharedNvs() {
  return nvt("_word", scalar("unsigned long")) +
         nvt("_half", scalar("unsigned short", scaling(5, -1, 0))) +
         nvt("_ratio", floating("float")) + nvt("_power", enumeration("power_t")) +
         nvt("_high", bits(0, 4)) + nvt("_low", bits(4, 4)) +
         nvt("_pair", structure({{"a", scalar("unsigned short")}, {"b", scalar("signed short")}})) +
         nvt("_either",
             unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}})) +
         nvt("_list", scalar("unsigned short", arraySize(3))) +
         nvt("_text", scalar("unsigned char", arraySize(4))) +
         nvt("_pairs", structure({{"a", scalar("unsigned short")}}, arraySize(2))) +
         nvt("_alias", reference("SNVT_pair")) + nvt("_alias_2", reference("SNVT_alias")) +
         nvt("_word_alias", reference("SNVT_word")) + nvt("_chicken", reference("SNVT_egg")) +
         nvt("_egg", reference("SNVT_chicken")) +
         nvt("_endless", structure({{"next", reference("SNVT_endless")}})) +
         nvt("_dangling", reference("SNVT_missing")) + nvt("_bare", "");
}

// A catalogue of those types and of one more: SNVT_x, the type under test.
class OwnTypes {
 public:
  // `root` is the layout of SNVT_x.
  explicit OwnTypes(const std::string& root) : _manager(_files.makeManager()) {
    _files.write(korvat::TypeId::StdPrefix, "enums", sharedEnums());
    _files.write(korvat::TypeId::StdPrefix, "nvs", sharedNvs() + nvt("_x", root));
  }

  korvat::TypeManager& manager() { return _manager; }

  bool convert(const std::string& hex, json::Value& value,
               base::Endianess order = base::Endianess::Big) {
    const korvat::TypeId id(korvat::ResourceType::Nv, "", "_x");
    return _manager.rawToJson(id, bytesOf(hex), value, order, true);
  }

  // Compact JSON of a value of SNVT_x, behind "failed: " when the conversion said so.
  std::string decode(const std::string& hex, base::Endianess order = base::Endianess::Big) {
    json::Value value;
    const bool isDone = convert(hex, value, order);
    return (isDone ? "" : "failed: ") + value.stringify(0);
  }

 private:
  TempCatalogue _files;
  korvat::TypeManager _manager;
};

}  // namespace zavri::test
