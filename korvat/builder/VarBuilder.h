#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "korvat/builder/ItemBuilder.h"
#include "korvat/builder/VarTransitionTable.h"
#include "korvat/members/Member.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat {
class MemRefBase;
}

namespace zavri::korvat::builder {

// Builds network variable and configuration property types from "nvt" and "cpt" elements:
//
//   <nvt id="_switch" idx="95">
//     <p-name>SNVT_switch</p-name>
//     <size>2</size>
//     <aggregate cat="struct">
//       <members>
//         <member>
//           <scalar><nc-type>unsigned short</nc-type></scalar>
//           <p-name>value</p-name>
//           <unit id="u_pctLevel"/>
//         </member>
//         ...
//
// In "member", the member element comes first; what follows belongs to it. A second member element
// directly under one type throws the text "illegal state".
class VarBuilder : public ItemBuilder, public VarTransitionTable {
 public:
  void reset() override;
  void onElement(const std::string& name, const AttributeMap& attributes) override;
  void onElementEnd(const std::string& name) override;
  void onValue(const std::string& name, const std::string& value) override;
  void processAction(std::uint32_t action, const AttributeMap* attributes,
                     const std::string* value) override;

 private:
  void processText(Action action, const std::string& text);
  static void processFieldText(Action action, const std::string& text, Member& member);

  // The type.
  void createNvt(const AttributeMap* attributes);
  void createCpt(const AttributeMap* attributes);
  void beginType(std::unique_ptr<VarType> type, const AttributeMap* attributes);
  void setDefault(const std::string& text);
  void setObsolete(const std::string& text);
  void setSize(const std::string& text);
  void setProgName(const std::string& text);
  void setUnit(const AttributeMap* attributes);
  void rememberFormatId(const AttributeMap* attributes);
  void addFormat(const std::string& text);
  void callDone();
  // For messages.
  const char* getTypeName() const;

  // The members.
  template <typename T>
  T* push(const char* operation);
  bool place(std::unique_ptr<Member> member);
  void placeRoot(std::unique_ptr<Member> member);
  void pushRef(const AttributeMap* attributes);
  void pushAggregate(const AttributeMap* attributes);
  void checkPop();
  void pop();
  void buildLookup();
  void returnToMember();
  Member* findTop() const { return _members.empty() ? nullptr : _members.back(); }
  void setTopNcType(const std::string& text);

  // References.
  void readEnumHref(const AttributeMap* attributes);
  void readHref(MemRefBase& reference, const AttributeMap* attributes);
  void setRefValue(const std::string& text);
  void setRefName(MemRefBase& reference, const std::string& text);

  std::unique_ptr<VarType> _type;  // null between two items
  std::vector<Member*> _members;   // opened and not yet closed, innermost last; owned by the type
  std::string _formatId;           // of the last "format" element
  std::string _rootUnit;           // unit of the type itself, read before its root member
  bool _hasHref = false;           // the reference being read had a usable "href"
};

}  // namespace zavri::korvat::builder
