#pragma once

#include <memory>
#include <string>

#include "korvat/builder/EnumTransitionTable.h"
#include "korvat/builder/ItemBuilder.h"
#include "korvat/types/EnumType.h"

namespace zavri::korvat::builder {

// Builds enumeration types from "enumt" elements:
//
//   <enumt id="occup_t" idx="12">
//     <members>
//       <e-member id="OC_OCCUPIED"><value>0</value></e-member>
//     </members>
//   </enumt>
class EnumBuilder : public ItemBuilder, public EnumTransitionTable {
 public:
  void reset() override;
  void onElement(const std::string& name, const AttributeMap& attributes) override;
  void onElementEnd(const std::string& name) override;
  void onValue(const std::string& name, const std::string& value) override;
  void processAction(std::uint32_t action, const AttributeMap* attributes,
                     const std::string* value) override;

 private:
  void createItem(const AttributeMap* attributes);
  void setMemberName(const AttributeMap* attributes);
  void addMember(const std::string* value);
  void callDone();

  std::string _memberName;  // of the "e-member" being read; empty once its value was added
  std::unique_ptr<EnumType> _item;
};

}  // namespace zavri::korvat::builder
