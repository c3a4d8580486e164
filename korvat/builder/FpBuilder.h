#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "korvat/builder/FpTransitionTable.h"
#include "korvat/builder/ItemBuilder.h"
#include "korvat/types/FpType.h"

namespace zavri::korvat::builder {

// Builds functional profiles from "fpt" elements:
//
//   <fpt id="SFPTlampActuator" idx="16" key="3040" stlp_std="yes">
//     <obsolete>no</obsolete>
//     <inheriting><ref href="0000000000000000-0/fps">SFPTnodeObject</ref></inheriting>
//     <f-nvs>
//       <f-nv id="nviLampValue" idx="1">
//         <member>1</member> <mandatory>yes</mandatory> <dir>input</dir>
//         <ref href="http://types.lonmark.org/0000000000000000-0/nvs">SNVT_switch</ref>
//       </f-nv>
//     </f-nvs>
//     <f-cps>
//       <f-cp id="nciLocation" idx="1">
//         <applies>SFPTlampActuator</applies> <array>not permitted</array>
//         <min>0</min> <max>100</max> <default>0</default>
//         <ref>SCPTlocation</ref>
//       </f-cp>
//     </f-cps>
//   </fpt>
class FpBuilder : public ItemBuilder, public FpTransitionTable {
 public:
  void reset() override;
  void onElement(const std::string& name, const AttributeMap& attributes) override;
  void onElementEnd(const std::string& name) override;
  void onValue(const std::string& name, const std::string& value) override;
  void processAction(std::uint32_t action, const AttributeMap* attributes,
                     const std::string* value) override;

 private:
  void createFpt(const AttributeMap* attributes);
  void readAttributes(const AttributeMap& attributes);
  void rememberRefBase(const AttributeMap* attributes);
  void pushDatapoint(DpRef::DpType dpType, const AttributeMap* attributes);
  // Sets one field of the current datapoint.
  void setField(Action action, const std::string& text);
  void setObsolete(const std::string& text);
  void setInheritRef(const std::string& text);
  void setDirection(const std::string& text);
  void setRef(const std::string& text);
  void callDone();

  // Prefix of the set that the next reference names a type of; empty for the standard set.
  std::string _refBase;
  std::unique_ptr<FpType> _profile;
  DpRef* _datapoint = nullptr;  // being filled; owned by _profile
};

}  // namespace zavri::korvat::builder
