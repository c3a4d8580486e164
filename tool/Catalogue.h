#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "korvat/base/Buffer.h"
#include "korvat/base/Logger.h"
#include "korvat/base/Value.h"
#include "korvat/convert/JsonConverter.h"
#include "korvat/types/ResourceGroup.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tool/Failure.h"
#include "tool/Options.h"

namespace zavri::korvat::tool {

// The catalogue as the command line chose it. Every operation throws Failure where it cannot
// answer.
class Catalogue {
 public:
  // Throws kNotFound when there is no catalogue folder.
  explicit Catalogue(const Options& options);
  Catalogue(const Catalogue&) = delete;
  Catalogue& operator=(const Catalogue&) = delete;
  ~Catalogue();

  TypeManager& getManager() { return _manager; }
  const Options& getOptions() const { return _options; }

  // The type that the command line calls `text`: a bare name ("SNVT_temp_p", "occup_t"), a name
  // with its prefix, or a full type identifier.
  const BaseType& findType(const std::string& text);
  // The same for types that values have.
  const VarType& findVarType(const std::string& text);

  // The group of a kind in the set of the option --prefix; null when it cannot be loaded.
  const ResourceGroup* findGroup(ResourceType type);
  // The groups of a kind in the set of the option --prefix, or, without that option, in all sets of
  // the catalogue, the standard one first; those that cannot be loaded are left out.
  std::vector<const ResourceGroup*> findGroups(ResourceType type);
  // What the command line calls a type: "SNVT_temp_p", or with its prefix when a bare name would
  // mean another set.
  std::string nameOf(const BaseType& type) const;
  // The error for a group that is not there, with the library's reason for the last one.
  Failure missingGroup(ResourceType type);

  // Bytes of a value of the type, dynamic arrays at their full size.
  unsigned getSize(const VarType& type) { return getFacts(type).size; }

  // The same, and 0 for a type whose layout cannot be followed.
  unsigned findSize(const VarType& type);
  // Throws for a command that shows arrays at their full size, where the option --dynamic-arrays
  // asks for something else.
  void refuseDynamicArrays(const char* command) const;

  // Hexadecimal text, blanks allowed, as the bytes of one value.
  base::Buffer readHex(const std::string& text) const;
  // Throws unless the buffer is as long as the type says.
  void checkLength(const VarType& type, const base::Buffer& buffer);
  json::Value decode(const VarType& type, const base::Buffer& buffer);
  // The raw value for a JSON value. Throws, naming the member, when any part of it cannot be taken
  // as it is given.
  base::Buffer encode(const VarType& type, const json::Value& value);
  // Changes the members that `value` gives and leaves all other bits of `buffer` as they are;
  // throws as above, and then nothing has changed.
  void patch(const VarType& type, const json::Value& value, base::Buffer& buffer);

 private:
  // What the layout of a type says about all its values.
  struct Facts {
    unsigned size = 0;  // bytes
    bool hasDynamicArray = false;
    bool hasUnion = false;
  };

  // What all types of the catalogue are called, for those who misspelt one.
  struct TypeNames {
    std::vector<std::string> bare;
    std::multimap<std::string, std::string> all;  // bare name to what nameOf() says
  };

  // Made the first time: a stream may ask with every record.
  const TypeNames& getTypeNames();
  Failure unknownType(const std::string& text, const TypeId& id);
  const Facts& getFacts(const VarType& type);
  Failure encodeFailure(const VarType& type, const json::Value& value,
                        const JsonConverter& converter);
  // Bytes that a value takes whose dynamic arrays are as long as `buffer` says.
  unsigned measure(const VarType& type, const base::Buffer& buffer);
  // Adds to an error the first member that a value of `byteCount` bytes lacks.
  Failure withMissingMember(const VarType& type, unsigned byteCount, const std::string& begin,
                            const std::string& end);
  // The last warning of the library, in brackets, for the end of an error message; may be empty.
  std::string takeReason();

  Options _options;
  std::string _folder;
  TypeManager _manager;
  std::string _lastWarning;
  base::Logger::Sink _previousSink;
  base::Logger::Level _previousLevel;
  std::unordered_map<const VarType*, Facts> _facts;
  TypeNames _typeNames;
};

// "SNVT_temp_p": the name of a type as people write it.
std::string displayName(const BaseType& type);

// The types that display formats in other units have made of `type`, by format name. Each has its
// format attached.
std::vector<const VarType*> findDerivedTypes(TypeManager& manager, const VarType& type);

}  // namespace zavri::korvat::tool
