#pragma once

namespace zavri::korvat {

class ResourceGroup;
class TypeManager;

// Parses the display formats of all types of a group of variable types, once its file has been
// read. A format that shows members in other units (a factor and an offset) makes a type of its
// own, "<type>-<format>", whose members read and write those units; any other one is attached to
// its type. A text that is no format is a warning.
//
// A unit of an array's element is one of the whole array. The manager finds the types that members
// refer to, and may load other groups for that; without one (null) no member behind a reference is
// found. Types are taken by name: one that is derived itself is found by those that come after it.
void buildDisplayFormats(ResourceGroup& group, TypeManager* typeManager);

}  // namespace zavri::korvat
