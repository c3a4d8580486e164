#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include <boost/core/noncopyable.hpp>

#include "korvat/base/Export.h"
#include "korvat/types/BaseType.h"
#include "korvat/types/NameIndex.h"

namespace zavri::korvat {

class ResourceFileSet;

// The types of one kind in one resource set. Owns them.
class KORVAT_API ResourceGroup : private boost::noncopyable {
 public:
  explicit ResourceGroup(const ResourceFileSet* fileSet) : _fileSet(fileSet) {}
  virtual ~ResourceGroup() = default;

  // The type with that name ("_temp_p") or that LonMark number; null when there is none.
  virtual const BaseType* getType(const std::string& name) const;
  virtual const BaseType* getTypeByIndex(std::int32_t index) const;

  // Takes a type over. One without a name is dropped (false). A later type takes the place of an
  // earlier one with its name, which is deleted, and the number of an earlier one, which is still
  // found by name. A derived format type is found by name only.
  virtual bool internalAddType(std::unique_ptr<BaseType> type);

  // All types, by name and by number.
  const std::map<std::string, std::unique_ptr<BaseType>>& getTypesByName() const {
    return _typesByName;
  }
  const std::map<std::int32_t, BaseType*>& getTypesByIndex() const { return _typesByIndex; }

  const ResourceFileSet* getFileSet() const { return _fileSet; }

 private:
  void enterIndex(BaseType* type);
  void forgetIndex(const BaseType* type);

  const ResourceFileSet* _fileSet;
  std::map<std::string, std::unique_ptr<BaseType>> _typesByName;
  NameIndex _lookup;  // what _typesByName holds
  std::map<std::int32_t, BaseType*> _typesByIndex;
};

// A group whose types are all T.
template <typename T>
class TResourceGroup : public ResourceGroup {
 public:
  using ResourceGroup::ResourceGroup;

  const BaseType* getType(const std::string& name) const override {
    return ResourceGroup::getType(name);
  }
  const BaseType* getTypeByIndex(std::int32_t index) const override {
    return ResourceGroup::getTypeByIndex(index);
  }
};

}  // namespace zavri::korvat
