#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "korvat/base/Export.h"
#include "korvat/types/BaseType.h"
#include "korvat/types/DpRef.h"

namespace zavri::korvat {

// Functional profile: the network variables and configuration properties that make up one
// functional block. Filled by FpBuilder.
//
// Copies share their datapoints, and the last copy that has a datapoint releases it. What one copy
// adds later is not in the others. The profile that a datapoint points back to is the one it was
// added to; moving that profile takes the pointer along, destroying it leaves null in the
// datapoints that copies still have. So the end of a profile may write to datapoints of its copies:
// all of them belong to one thread then.
class KORVAT_API FpType : public BaseType {
 public:
  FpType() : BaseType(ResourceType::Fp) {}
  FpType(const FpType& other) = default;
  FpType(FpType&& other) noexcept;
  // Copies or moves, itself included. Datapoints whose profile is gone become this one's.
  FpType& operator=(FpType other);
  ~FpType() override;

  // Appends a datapoint to the collection of its kind; one without a number (0) gets its position,
  // counted from 1. Null is reported as an error and nothing changes.
  void add(std::unique_ptr<DpRef> dp);

  // The profile that this one inherits from; the default identifier when there is none.
  const TypeId& getBase() const { return _base; }
  TypeId& getBase() { return _base; }
  bool hasBase() const { return _base.getType() == ResourceType::Fp && !_base.getId().empty(); }

  // LonMark functional profile number; -1 when the definition gives none.
  std::int32_t getKey() const { return _key.value_or(-1); }
  bool hasKey() const { return _key.has_value(); }
  void setKey(std::int32_t key) { _key = key; }

  // The datapoints of one kind in the order of the definition. A number that is no kind is reported
  // as an error and stands for the network variables, here and below.
  const std::vector<DpRef*>& getNvColl() const { return _nvColl; }
  const std::vector<DpRef*>& getCpColl() const { return _cpColl; }
  const std::vector<DpRef*>& getColl(DpRef::DpType dpType) const;
  // What is put into it directly stays with the caller: add() is the way to hand a datapoint over.
  std::vector<DpRef*>& getColl(DpRef::DpType dpType);

  // The first datapoint of that kind, in the order of the definition, with that ...
  // ... number in its collection;
  const DpRef* getDpRefByIndex(DpRef::DpType dpType, std::uint32_t index) const;
  // ... member number as the definition states it;
  const DpRef* getDpRefByMember(DpRef::DpType dpType, std::int32_t member) const;
  // ... type, and that text as what it applies to; with an empty text one that applies to this
  // profile: whose text contains this profile's name.
  // Null when there is none.
  const DpRef* getDpRefByTypeId(DpRef::DpType dpType, const TypeId& typeId,
                                const std::string& appliesTo) const;

 private:
  void setOwner(const FpType* from, FpType* to);

  TypeId _base;
  std::optional<std::int32_t> _key;
  std::vector<DpRef*> _nvColl;
  std::vector<DpRef*> _cpColl;
  std::vector<std::shared_ptr<DpRef>> _owned;  // what the two collections point to
};

}  // namespace zavri::korvat
