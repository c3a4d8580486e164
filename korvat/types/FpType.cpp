#include "korvat/types/FpType.h"

#include <algorithm>
#include <utility>

#include "korvat/base/Logger.h"

namespace zavri::korvat {

using base::Logger;

namespace {

template <typename Predicate>
const DpRef* findFirst(const std::vector<DpRef*>& coll, Predicate matches) {
  const auto found = std::find_if(coll.begin(), coll.end(),
                                  [&](const DpRef* dp) { return dp != nullptr && matches(*dp); });
  return found == coll.end() ? nullptr : *found;
}

}  // namespace

FpType::FpType(FpType&& other) noexcept
    : BaseType(std::move(other)),
      _base(std::move(other._base)),
      _key(other._key),
      _nvColl(std::exchange(other._nvColl, {})),
      _cpColl(std::exchange(other._cpColl, {})),
      _owned(std::exchange(other._owned, {})) {
  setOwner(&other, this);
}

FpType& FpType::operator=(FpType other) {
  setOwner(this, nullptr);  // first, as `other` may share these datapoints
  BaseType::operator=(std::move(other));
  _base = std::move(other._base);
  _key = other._key;
  _nvColl.swap(other._nvColl);
  _cpColl.swap(other._cpColl);
  _owned.swap(other._owned);
  setOwner(&other, this);  // of a profile that was moved here
  setOwner(nullptr, this);
  return *this;
}

FpType::~FpType() {
  setOwner(this, nullptr);
}

// Changes the profile that datapoints point back to, where it is `from`.
void FpType::setOwner(const FpType* from, FpType* to) {
  for (const std::shared_ptr<DpRef>& dp : _owned) {
    if (dp->getFpType() == from) dp->setFpType(to);
  }
}

void FpType::add(std::unique_ptr<DpRef> dp) {
  if (!dp) {
    Logger::error("[FpType::add] null pointer\n");
    return;
  }

  std::vector<DpRef*>& coll = getColl(dp->getDpType());
  const std::shared_ptr<DpRef>& owned = _owned.emplace_back(std::move(dp));
  coll.push_back(owned.get());
  owned->setFpType(this);
  if (owned->getIndex() == 0) owned->setIndex(static_cast<std::int32_t>(coll.size()));
}

const std::vector<DpRef*>& FpType::getColl(DpRef::DpType dpType) const {
  switch (dpType) {
    case DpRef::DpType::Nv:
      return _nvColl;
    case DpRef::DpType::Cp:
      return _cpColl;
  }
  Logger::error("[FpType::getColl] invalid type (%ld), using nvColl\n", static_cast<long>(dpType));
  return _nvColl;
}

std::vector<DpRef*>& FpType::getColl(DpRef::DpType dpType) {
  return const_cast<std::vector<DpRef*>&>(std::as_const(*this).getColl(dpType));
}

const DpRef* FpType::getDpRefByIndex(DpRef::DpType dpType, std::uint32_t index) const {
  const std::vector<DpRef*>& coll = getColl(dpType);
  const auto hasIndex = [index](const DpRef& dp) { return std::int64_t{dp.getIndex()} == index; };
  // Members are usually numbered 1, 2, 3 in order.
  if (index >= 1 && index <= coll.size()) {
    const DpRef* dp = coll[index - 1];
    if (dp != nullptr && hasIndex(*dp)) return dp;
  }

  Logger::debug("[FpType::getDpRefByIndex] not found - using linear search\n");
  return findFirst(coll, hasIndex);
}

const DpRef* FpType::getDpRefByMember(DpRef::DpType dpType, std::int32_t member) const {
  return findFirst(getColl(dpType), [=](const DpRef& dp) { return dp.getMember() == member; });
}

const DpRef* FpType::getDpRefByTypeId(DpRef::DpType dpType, const TypeId& typeId,
                                      const std::string& appliesTo) const {
  return findFirst(getColl(dpType), [&](const DpRef& dp) {
    if (dp.getTypeId() != typeId) return false;
    return appliesTo.empty() ? dp.getAppliesTo().find(getName()) != std::string::npos
                             : dp.getAppliesTo() == appliesTo;
  });
}

}  // namespace zavri::korvat
