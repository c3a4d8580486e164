#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korvat/base/Buffer.h"
#include "korvat/base/Endianess.h"
#include "korvat/base/Export.h"
#include "korvat/base/Value.h"
#include "korvat/types/DpRef.h"
#include "korvat/types/TypeId.h"

namespace zavri::korvat {

class BaseType;
class ConversionPlan;
class FpType;
class PlanCache;
class ResourceFileSet;
class Value;
class VarType;

// The one object that an application creates: finds the types of a catalogue of resource files and
// converts values with them.
//
// Owns the resource sets, and so the types: the pointers that look-ups return hold until the
// manager and all its copies are gone. Copies share the sets and with them what is loaded. Nothing
// is read at construction; the files of a prefix are read the first time something asks for a type
// of theirs, so that even look-ups change the catalogue.
//
// Threads: managers that are no copies of each other share nothing, and each thread may have its
// own. One manager, with its copies, belongs to one thread at a time until the groups in use are
// loaded. From then on these may run side by side: look-ups in those groups, conversions of their
// types, accessValue() and all const operations, each with buffers and values of its own. Not so
// options, assignment, and whatever meets a group that is not loaded, such as a reference into it
// or a search through a set without that group: a group that is missing is looked for each time.
// To load a group ahead of time: getResourceFileSet(prefix).getGroup(type, true, &manager).
//
// When memory runs out, any operation may throw std::bad_alloc: no type is half read then, and the
// same request may be repeated.
class KORVAT_API TypeManager {
 public:
  // Number of a bit of the union mode.
  enum class UnionModeBit : std::uint32_t {
    UnionRawHex = 0,          // unions are hexadecimal text in JSON
    UnionNoRawHexToJson = 1,  // ... but not from raw to JSON
    UnionNoRawHexToRaw = 2,   // ... but not from JSON to raw
    UnionConverterFlag = 3,   // flag that the short conversions hand on
  };

  static const std::string restTypePrefix;     // "/~/type/"
  static const std::string restTypeGenericDp;  // "/~/type/schema/fragment/dp"

  // `driverType` is a segment of the full type identifiers; null is the empty text.
  explicit TypeManager(const char* driverType);
  TypeManager(const TypeManager&);
  // Takes sets and options over. Pointers from earlier look-ups of this manager still hold.
  TypeManager& operator=(const TypeManager& other);
  ~TypeManager();

  // Finds or makes the set of a prefix as getPrefix() of TypeId gives it. Reads no file; a prefix
  // without a folder has a set without groups.
  ResourceFileSet& getResourceFileSet(const std::string& prefix);

  // Each returns null when there is no such type, or it is of another kind. A text is read by
  // toTypeId().
  const BaseType* getType(const TypeId& id);
  const BaseType* getType(const std::string& text);
  const VarType* getVarType(const TypeId& id);
  const VarType* getVarType(const std::string& text);
  const FpType* getFpType(const TypeId& id);
  const FpType* getFpType(const std::string& text);
  // By LonMark number. A missing file is not reported.
  const BaseType* getTypeByIndex(const std::string& prefix, ResourceType type, std::int32_t index);
  const VarType* getVarTypeByIndex(const std::string& prefix, ResourceType type,
                                   std::int32_t index);
  const FpType* getFpTypeByIndex(const std::string& prefix, std::int32_t index);
  // None when there is no such type.
  TypeId getTypeIdByIndex(const std::string& prefix, ResourceType type, std::int32_t index);

  // Finds a functional profile by its key in the set of a device's prefix and, scope by scope, in
  // the more general ones down to the standard set. At each scope the set of the alternate program
  // ID is asked first: the one whose first digit is 9 instead of 8, or 8 instead of 9. The result
  // carries the prefix of the set that has the profile; None when there is no such profile or the
  // prefix has not 18 characters. Throws std::out_of_range for an empty prefix. A missing file is
  // not reported.
  TypeId searchFpType(const std::string& prefix, std::int32_t key);

  // Datapoint number `index`, counted from 1, of the profile that searchFpType() finds, or with
  // `useBase` of the profile that it inherits from; null when there is none. An empty prefix throws
  // as there, unless key or number is negative or the number 0.
  const DpRef* searchDpRef(const std::string& prefix, DpRef::DpType dpType, std::int32_t fpKey,
                           std::int32_t index, bool useBase);

  // Type of the datapoint that searchDpRef() finds in the profile itself, or None. The last
  // argument is accepted for the callers' sake and ignored: an inherited profile is never asked.
  TypeId searchVarType(const std::string& prefix, DpRef::DpType dpType, std::int32_t fpKey,
                       std::int32_t index, bool useBase);

  // Reads "<prefix>/<format id>", alone or behind "/~/type/<kind>/<driver>/"; kind and driver are
  // not checked. Invalid, with a warning when nothing is left to read, for anything else.
  TypeId toTypeId(const std::string& text) const;
  // "/~/type/dp/<driver>/<prefix>/<format id>", with "value/" instead of "dp/" when `isValue` is
  // set and "fb/" for a profile; empty for None. SNVT_xxx is restTypeGenericDp, or empty as a
  // value.
  std::string toFullTypeId(const TypeId& id, bool isValue) const;

  // Converts a raw value to JSON. False when there is no such type or the walk failed; `value` then
  // holds what was converted so far. What lies beyond the end of `buffer` reads as 0. The short
  // form takes the network byte order and the flag of the union mode.
  [[nodiscard]] bool rawToJson(const TypeId& id, const base::Buffer& buffer, json::Value& value,
                               base::Endianess endianess, bool allowSeveralUnionMembers);
  [[nodiscard]] bool rawToJson(const TypeId& id, const base::Buffer& buffer, json::Value& value);

  // Writes a JSON value of that shape into `buffer`, which grows to the whole value. False when
  // there is no such type or a member cannot be written (see JsonConverter, which also tells why);
  // `buffer` then holds what was written so far.
  [[nodiscard]] bool jsonToRaw(const TypeId& id, const json::Value& value, base::Buffer& buffer,
                               base::Endianess endianess, bool allowSeveralUnionMembers);
  [[nodiscard]] bool jsonToRaw(const TypeId& id, const json::Value& value, base::Buffer& buffer);

  // The same straight from and to JSON text, byte for byte what rawToJson() with stringify() and
  // json::Value::parse() with jsonToRaw() give, without the document in between.
  // Writes compact text over `text`; without such a type `text` is left alone.
  [[nodiscard]] bool rawToJsonText(const TypeId& id, const base::Buffer& buffer, std::string& text,
                                   base::Endianess endianess, bool allowSeveralUnionMembers);
  [[nodiscard]] bool rawToJsonText(const TypeId& id, const base::Buffer& buffer, std::string& text);
  // False also for a text that is no JSON; `buffer` is then left alone.
  [[nodiscard]] bool jsonTextToRaw(const TypeId& id, std::string_view text, base::Buffer& buffer,
                                   base::Endianess endianess, bool allowSeveralUnionMembers);
  [[nodiscard]] bool jsonTextToRaw(const TypeId& id, std::string_view text, base::Buffer& buffer);

  // Rewrites the raw value in `buffer` from `endianess` into the host's byte order, or back: both
  // directions do the same, see VarType::convertPacket. False, with a warning when there is no such
  // type, and nothing changes.
  [[nodiscard]] bool convert(base::Endianess endianess, const TypeId& id, base::Buffer& buffer,
                             bool toNetwork);

  // Access to single members of the raw value in `buffer`, which must outlive the result. A type
  // that does not exist gives a value without members.
  Value accessValue(base::Endianess endianess, const TypeId& id, base::Buffer& buffer);

  // Root folder of the resource tree; empty, the default, for "res/korvat/". Sets that exist stay
  // where they are.
  const std::string& getBaseDir() const { return _baseDir; }
  void setBaseDir(const std::string& baseDir) { _baseDir = baseDir; }
  const std::string& getDriverType() const { return _driverType; }
  void setDriverType(const std::string& driverType) { _driverType = driverType; }
  base::Endianess getNetworkEndianess() const { return _networkEndianess; }
  void setNetworkEndianess(base::Endianess endianess) { _networkEndianess = endianess; }

  // Arrays with a minimum size take their element count from the number before them.
  bool getUseDynamicArrays() const { return _useDynamicArrays; }
  void setUseDynamicArrays(bool isOn) { _useDynamicArrays = isOn; }
  // Missing files, and values out of their limits, are reported.
  bool isShowWarnings() const { return _showWarnings; }
  void showWarnings(bool isOn) { _showWarnings = isOn; }
  bool isAllowMissingFields() const { return _allowMissingFields; }
  void setAllowMissingFields(bool isOn) { _allowMissingFields = isOn; }
  bool isAllowUndefinedFields() const { return _allowUndefinedFields; }
  void setAllowUndefinedFields(bool isOn) { _allowUndefinedFields = isOn; }
  bool isAllowCuttingToMinMax() const { return _allowCuttingToMinMax; }
  void setAllowCuttingToMinMax(bool isOn) { _allowCuttingToMinMax = isOn; }
  // The text "invalid" stands for a member's invalid marker.
  bool isSupportInvalidKeyword() const { return _supportInvalidKeyword; }
  void setSupportInvalidKeyword(bool isOn) { _supportInvalidKeyword = isOn; }

  void setUnionModeBit(UnionModeBit bit) { _unionModeBits |= maskOf(bit); }
  void clearUnionModeBit(UnionModeBit bit) { _unionModeBits &= ~maskOf(bit); }
  bool hasUnionModeBit(UnionModeBit bit) const { return (_unionModeBits & maskOf(bit)) != 0; }
  // Whether unions are hexadecimal text in each direction.
  bool isUnionJsonToRawHex() const;
  bool isUnionRawToRawHex() const;

 private:
  friend class ResourceFileSet;  // counts the loads that this manager has under way

  // Gives `id` the name of the profile with that key in the set of its prefix; false, and nothing
  // changes, when there is none. A set is kept only when it has profiles: a search passes by many
  // prefixes that have no folder.
  bool searchFpType(TypeId& id, std::int32_t key);
  std::shared_ptr<ResourceFileSet> makeFileSet(const std::string& prefix);
  void addFileSet(const std::string& prefix, const std::shared_ptr<ResourceFileSet>& fileSet);
  ResourceFileSet& getResourceFileSet(const TypeId& id);
  ResourceFileSet* findFileSet(const TypeId& id) const;
  // The plan for a conversion, when there is one that covers it.
  const ConversionPlan* findPlan(const TypeId& id, base::Endianess endianess) const;
  // To be called after a conversion that walked through all members and so has loaded what they
  // refer to.
  void makePlan(const TypeId& id, const VarType& type);
  void retire(const std::shared_ptr<ResourceFileSet>& fileSet);

  static std::uint32_t maskOf(UnionModeBit bit) { return 1u << static_cast<std::uint32_t>(bit); }

  // What getPrefix() of an identifier with a valid prefix and scope says, as numbers.
  struct PrefixKey {
    std::uint64_t progId;  // masked
    Scope scope;

    bool operator==(const PrefixKey&) const = default;
    auto operator<=>(const PrefixKey&) const = default;
  };
  static PrefixKey keyOf(const TypeId& id);

  // By prefix. Shared with the copies of this manager.
  std::map<std::string, std::shared_ptr<ResourceFileSet>> _fileSets;
  // The same sets, but for those whose prefix is not one that an identifier gives; sorted by key.
  std::vector<std::pair<PrefixKey, ResourceFileSet*>> _fileSetsByKey;
  ResourceFileSet* _standardFileSet = nullptr;  // the one of the standard prefix, if it is there
  // Sets that an assignment has put out of use: pointers into them still hold.
  std::vector<std::shared_ptr<ResourceFileSet>> _retiredFileSets;
  std::string _baseDir;
  std::string _driverType;
  base::Endianess _networkEndianess = base::Endianess::Big;
  bool _useDynamicArrays = false;
  bool _showWarnings = true;
  bool _allowMissingFields = false;
  bool _allowUndefinedFields = false;
  bool _allowCuttingToMinMax = true;
  bool _supportInvalidKeyword = false;
  std::uint32_t _unionModeBits = 0;
  // Of the types in _fileSets, as their references resolve here. Not shared with copies.
  std::unique_ptr<PlanCache> _plans;
  unsigned _loadsUnderWay = 0;  // inside each other
};

}  // namespace zavri::korvat
