// A schema that uses the whole language. The truncation and mutation tests start from it.
#pragma once

#include "tests/support/namespaces.h"

namespace tests {

inline const char* const kMofSample = R"MOF(// Copyright line
/* Block comment ** with stars /* and no nesting */
#pragma locale ("en_US")
#pragma namespace ("root/cimv2")

Qualifier Abstract : boolean = false, Scope(class, association, indication), Flavor(Restricted);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
Qualifier Indication : boolean = false, Scope(class, indication), Flavor(DisableOverride);
Qualifier Description : string = null, Scope(any), Flavor(Translatable);
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Override : string = null, Scope(property, method, reference), Flavor(Restricted);
Qualifier Values : string[], Scope(property, method, parameter), Flavor(Translatable);
Qualifier Range : sint32[2] = {-1, 1}, Scope(property);
Qualifier In : boolean = true, Scope(parameter), Flavor(DisableOverride);
Qualifier EmbeddedInstance : string = null, Scope(property, method, parameter);

   [Abstract, Description (
       "The root. "
       "In two pieces." )]
class CIM_ManagedElement {
      [Description("Its name"), Key : DisableOverride ToSubclass]
   string InstanceID;
      [Description("Short")] // in one line
   string Caption = "none" " \x41";
};

   [Description("A setting. \"Quoted\",\n\xe4 and \X20AC.")]
class CIM_Setting : CIM_ManagedElement {
      [Override("Caption")]
   string Caption = "";
      [Values { "Unknown", "Other", "DMTF Reserved" }, Range]
   uint16 Kind = 1;
   uint8 Mask = 11111b;
   uint32 Octal = 0777;
   uint64 Hex = 0xFFFFFFFFFFFFFFFF;
   sint8 Low = -128;
   real32 Ratio = -.5E-3;
   real64 Ratios[] = { 1.0, +2.5e10, NULL };
   char16 Letter = '\x20AC';
   boolean Flags[4] = { true, FALSE };
   datetime When = "20260131123456.000000+060";
   datetime Interval = "00000012010203.000000:000";
      [EmbeddedInstance("CIM_ManagedElement")]
   string Embedded;
   string Empty[] = {};
   string Class;
      [Description("Applies it")]
   uint32 Apply(
         [In, Description("To what")] CIM_ManagedElement REF Element,
         [In(false)] string Messages[],
         datetime When[2]);
   boolean Reset();
};

   [Association, Description("Which setting an element has")]
class CIM_ElementSetting {
      [Key] CIM_ManagedElement REF Element;
      [Key] CIM_Setting REF Setting = NULL;
};

   [Indication, Abstract]
class CIM_InstIndication {
   string Source;
};

instance of CIM_Setting as $First {
   InstanceID = "one"; Mask = 0x0F; Class = "c";
   Flags = { false, NULL };
};
instance of CIM_Setting as $Second { [Description("here")] InstanceID = "two"; };
instance of CIM_ElementSetting { Element = $First; Setting = "CIM_Setting.InstanceID=\"two\""; };
)MOF";

}  // namespace tests
