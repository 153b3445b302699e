#!/usr/bin/env python3
"""Writes a synthetic CIM schema of the size and style of a published one.

    makeschema.py FOLDER [--files N] [--seed S]

FOLDER gets schema.mof, which includes all others; Core/qualifiers.mof with the qualifier declarations; and a file
for each class in the folder of its model: N files in all, by default 1600 with about 5 MB. The last classes are
those that the collector requires, so that the schema passes "velhost check". The same seed always gives the same
bytes. Prints the number of classes, files and bytes.
"""

import argparse
import pathlib
import random

QUALIFIERS = """\
Qualifier Abstract : boolean = false,
    Scope(class, association, indication),
    Flavor(Restricted);

Qualifier Aggregate : boolean = false,
    Scope(reference),
    Flavor(DisableOverride);

Qualifier Aggregation : boolean = false,
    Scope(association),
    Flavor(DisableOverride);

Qualifier ArrayType : string = "Bag",
    Scope(property, parameter),
    Flavor(DisableOverride);

Qualifier Association : boolean = false,
    Scope(association),
    Flavor(DisableOverride);

Qualifier BitMap : string[],
    Scope(property, parameter, method);

Qualifier Counter : boolean = false,
    Scope(property, parameter, method);

Qualifier Deprecated : string[],
    Scope(any),
    Flavor(Restricted);

Qualifier Description : string = null,
    Scope(any),
    Flavor(Translatable);

Qualifier DisplayName : string = null,
    Scope(any),
    Flavor(Translatable);

Qualifier EmbeddedInstance : string = null,
    Scope(property, parameter, method);

Qualifier EmbeddedObject : boolean = false,
    Scope(property, parameter, method),
    Flavor(DisableOverride);

Qualifier Experimental : boolean = false,
    Scope(any),
    Flavor(Restricted);

Qualifier In : boolean = true,
    Scope(parameter),
    Flavor(DisableOverride);

Qualifier Indication : boolean = false,
    Scope(class, indication),
    Flavor(DisableOverride);

Qualifier Key : boolean = false,
    Scope(property, reference),
    Flavor(DisableOverride);

Qualifier MappingStrings : string[],
    Scope(any);

Qualifier Max : uint32 = null,
    Scope(reference);

Qualifier MaxLen : uint32 = null,
    Scope(property, parameter, method);

Qualifier MaxValue : sint64 = null,
    Scope(property, parameter, method);

Qualifier Min : uint32 = 0,
    Scope(reference);

Qualifier MinValue : sint64 = null,
    Scope(property, parameter, method);

Qualifier ModelCorrespondence : string[],
    Scope(any);

Qualifier Out : boolean = false,
    Scope(parameter),
    Flavor(DisableOverride);

Qualifier Override : string = null,
    Scope(property, reference, method),
    Flavor(Restricted);

Qualifier PUnit : string = null,
    Scope(property, parameter, method);

Qualifier Required : boolean = false,
    Scope(property, reference, parameter, method),
    Flavor(DisableOverride);

Qualifier UMLPackagePath : string = null,
    Scope(class, association, indication);

Qualifier ValueMap : string[],
    Scope(property, parameter, method);

Qualifier Values : string[],
    Scope(property, parameter, method),
    Flavor(Translatable);

Qualifier Version : string = null,
    Scope(class, association, indication),
    Flavor(Restricted, Translatable);

Qualifier Write : boolean = false,
    Scope(property);

Qualifier SupportedMachineTypes : string[] = null,
    Scope(class),
    Flavor(Restricted);

Qualifier MaxInstanceCount : uint16 = null,
    Scope(class),
    Flavor(Restricted);

Qualifier Offset : uint32[] = null,
    Scope(property);

Qualifier Index : uint16 = null,
    Scope(property);
"""

ROOT = """\
   [Abstract, Version ( "2.19.0" ), 
    UMLPackagePath ( "CIM::Core::CoreElements" ), 
    Description ( 
       "ManagedElement is the root of all classes that are no "
       "association. Its properties identify an element to people." )]
class CIM_ManagedElement {

      [Description ( "Identifies the instance within its namespace." )]
   string InstanceID;

      [Description ( "One line about the element." ), 
       MaxLen ( 64 )]
   string Caption;

      [Description ( "The element in words." )]
   string Description;

      [Description ( "The element\\'s name, as its user knows it." )]
   string ElementName;
};
"""

# What the collector requires of a schema, one class per file.
COLLECTOR = {
    "KROSG_ChipsetData": "[Abstract]\nclass KROSG_ChipsetData : CIM_ManagedElement {\n"
                         "   string MachineType;\n   datetime StatisticTime;\n};\n",
    "KROSG_PCIIOBRIDGE_StatisticData": "class KROSG_PCIIOBRIDGE_StatisticData : KROSG_ChipsetData {\n"
                                       "      [Index ( 2 )]\n   uint8 ErrorStatus[];\n};\n",
    "KROSG_MEMCTL_StatisticData": "class KROSG_MEMCTL_StatisticData : KROSG_ChipsetData {\n};\n",
    "KROSG_L3Cache_StatisticData": "class KROSG_L3Cache_StatisticData : KROSG_ChipsetData {\n};\n",
    "KROSG_J2_PCIIOBRIDGE_StatisticData":
        "   [SupportedMachineTypes { \"6203\", \"6204\" }, MaxInstanceCount ( 2 )]\n"
        "class KROSG_J2_PCIIOBRIDGE_StatisticData : KROSG_PCIIOBRIDGE_StatisticData {\n"
        "      [Index ( 4 ), MaxLen ( 8 )]\n   uint8 ErrorMask[];\n};\n",
    "KROSG_DCAPFile": "class KROSG_DCAPFile : CIM_ManagedElement {\n   string FileName;\n   string ErrRawData;\n"
                      "   datetime MessageTimestamp;\n   string SourceNode;\n   string CreationClassName;\n"
                      "   string LogCreationClassName;\n   string LogName;\n   string RecordID;\n};\n",
}

MODELS = ["Application", "Core", "Device", "Event", "Interop", "Metrics", "Network", "Physical", "Policy",
          "Support", "System", "User"]
NOUNS = """Access Adapter Agent Area Array Battery Block Cable Capability Card Channel Chassis Clock Cluster
Collection Component Connector Controller Credential Database Device Disk Domain Element Endpoint Engine Entry Extent
Fan Filter Firmware Flow Group Host Identity Interface Job Library Link Location Log Media Memory Module Network Node
Package Partition Path Pipe Policy Pool Port Process Processor Profile Protocol Queue Record Redundancy Resource Role
Route Rule Sensor Server Service Setting Slot Snapshot Software Storage System Table Tape Thread Token Unit Vault View
Volume Zone""".split()
ADJECTIVES = """Abstract Active Administrative Allocated Alternate Associated Available Basic Common Composite Concrete
Current Default Dependent Desired Dynamic Elected Enabled Extended Filtered Generic Hosted Initial Installed Internal
Last Logical Managed Maximum Minimum Named Operational Optional Ordered Pending Physical Preferred Primary Raw
Recorded Redundant Remote Requested Reserved Secondary Shared Spare Static Supported Transient Typical Virtual
Weighted""".split()
WORDS = """the a an of to in for that which is are may be when by its this element property value instance class
indicates describes identifies represents managed system service protocol setting state requested enabled disabled
supported number name type associated defined specific implementation vendor client provider information operation
other between within each one more than and or not should must""".split()
SCALARS = ["uint8", "uint16", "uint32", "uint64", "sint8", "sint16", "sint32", "sint64", "real32", "real64", "boolean",
           "char16", "datetime", "string"]
DEFAULTS = {"uint16": ["0", "2", "5", "12"], "uint32": ["0", "0x10", "4096"], "boolean": ["true", "false"],
            "string": ["\"\"", "\"Not \" \"Set\""], "real32": ["0.5", "1.0E3"], "sint32": ["-1", "+7", "017"]}
METHODS = ["Activate", "AssignTo", "Change", "Create", "Delete", "Modify", "Reset", "Start", "Stop"]
WIDTH = 58  # characters of a description per literal


class TextMaker:
    """Descriptions and value lists in the usual layout; all choices come from one random generator."""

    def __init__(self, choices):
        self._choices = choices

    def sentence(self):
        words = [self._choices.choice(WORDS) for _ in range(self._choices.randint(6, 16))]
        words[0] = words[0].capitalize()
        if self._choices.random() < 0.3:
            words[len(words) // 2] = "\\'" + words[len(words) // 2] + "\\'"
        if self._choices.random() < 0.1:
            words[-1] = "\\\"" + words[-1] + "\\\""
        return " ".join(words) + "."

    def paragraph(self, sentences):
        breaks = ["\\n" if self._choices.random() < 0.2 else " " for _ in range(sentences)]
        return "".join(self.sentence() + end for end in breaks).strip()

    def description(self, sentences, margin):
        """Description ( "..." "..." ), split into adjacent literals between words."""
        lines, line = [], ""
        for word in self.paragraph(sentences).split(" "):
            if line and len(line) + len(word) >= WIDTH:
                lines.append(line)
                line = ""
            line += word + " "
        lines.append(line.rstrip())
        indent = " " * (margin + 4)
        return "Description ( \n" + "\n".join(f'{indent}"{text}"' for text in lines) + " )"

    def array(self, name, values, margin):
        lines, line = [], ""
        for value in values:
            text = f'"{value}"'
            if line and len(line) + len(text) >= WIDTH:
                lines.append(line)
                line = ""
            line += text + ", "
        lines.append(line)
        joined = (", \n" + " " * (margin + 4)).join(text.rstrip(", ") for text in lines)
        return f"{name} {{ {joined} }}"

    def value_map(self, margin):
        names = self._choices.sample(ADJECTIVES, self._choices.randint(2, 8))
        codes = [str(code) for code in range(len(names) + 2)] + [f"{len(names) + 2}..0x7FFF", "0x8000.."]
        return [self.array("ValueMap", codes, margin),
                self.array("Values", ["Unknown", "Other", *names, "Reserved", "Vendor Specific"], margin)]


class ClassMaker:
    """Generates classes one after the other, each below one generated earlier."""

    def __init__(self, seed):
        self._choices = random.Random(seed)
        self._text = TextMaker(self._choices)
        # By class name: the properties it declares with their types, its methods, and its superclass.
        self._properties = {"CIM_ManagedElement": {}}
        self._methods = {"CIM_ManagedElement": {}}
        self._super = {"CIM_ManagedElement": None}
        self._by_kind = {"class": ["CIM_ManagedElement"], "association": [], "indication": []}

    def new_class(self):
        """Returns name, model and text."""
        kind = self._choices.choices(["class", "association", "indication"], [72, 22, 6])[0]
        name = self._new_name(kind)
        above = self._super_of(kind)
        self._super[name], self._properties[name], self._methods[name] = above, {}, {}
        model = self._choices.choice(MODELS)
        body = self._references(name, above) if kind == "association" else ""
        body += self._overrides(name, above) + self._new_properties(name)
        if kind == "class":
            body += self._new_methods(name, above)
        heading = f"class {name} : {above} {{\n" if above else f"class {name} {{\n"
        self._by_kind[kind].append(name)
        return name, model, self._class_qualifiers(kind, model) + heading + body + "};\n"

    def _new_name(self, kind):
        while True:
            words = self._choices.sample(NOUNS, 2)
            name = "CIM_" + self._choices.choice(ADJECTIVES) + words[0] + words[1]
            if kind == "indication":
                name += "Indication"
            if name not in self._super:
                return name

    def _super_of(self, kind):
        known = self._by_kind[kind]
        if not known or (kind != "class" and self._choices.random() < 0.3):
            return None
        # Half of the classes derive from one of the latest, so that chains become long.
        recent = known[-12:] if self._choices.random() < 0.5 else known
        above = self._choices.choice(recent)
        return above if len(self._lineage(above)) < 24 else "CIM_ManagedElement" if kind == "class" else None

    def _lineage(self, name):
        lineage = []
        while name:
            lineage.append(name)
            name = self._super[name]
        return lineage

    def _class_qualifiers(self, kind, model):
        parts = [kind.capitalize()] if kind != "class" else []
        if self._choices.random() < 0.2:
            parts.append("Abstract")
        if self._choices.random() < 0.1:
            parts.append("Experimental")
        if kind == "association" and self._choices.random() < 0.3:
            parts.append("Aggregation")
        parts += [f'Version ( "2.{self._choices.randint(6, 40)}.0" )',
                  f'UMLPackagePath ( "CIM::{model}::{self._choices.choice(NOUNS)}" )',
                  self._text.description(self._choices.randint(2, 6), 3)]
        return "   [" + ", \n    ".join(parts) + "]\n"

    def _element(self, qualifiers, line):
        return "\n      [" + ", \n       ".join(qualifiers) + "]\n   " + line + "\n"

    def _taken(self, name):
        return {known.lower() for above in self._lineage(name) for known in self._properties[above]}

    def _references(self, name, above):
        if above:
            return ""
        text = ""
        for role in ("Antecedent", "Dependent"):
            target = self._choices.choice(self._by_kind["class"])
            self._properties[name][role] = None
            text += self._element(["Key", "Min ( 0 )", self._text.description(1, 6)], f"{target} REF {role};")
        return text

    def _overrides(self, name, above):
        text = ""
        known = [(known, line) for link in self._lineage(above) for known, line in self._properties[link].items() if line]
        for known, line in known[:1] if self._choices.random() < 0.4 else []:
            self._properties[name][known] = line
            text += self._element([f'Override ( "{known}" )', self._text.description(2, 6)], line)
        return text

    def _new_properties(self, name):
        text, taken = "", self._taken(name)
        for _ in range(self._choices.randint(1, 6)):
            known = self._choices.choice(ADJECTIVES) + self._choices.choice(NOUNS)
            if known.lower() in taken:
                continue
            taken.add(known.lower())
            text += self._property(name, known)
        return text

    def _property(self, name, known):
        kind = self._choices.choices(["state", "scalar", "array", "embedded"], [30, 50, 15, 5])[0]
        qualifiers = [self._text.description(self._choices.randint(1, 5), 6)]
        type_name, suffix, default = self._choices.choice(SCALARS), "", ""
        if kind == "state":
            type_name = "uint16"
            qualifiers += self._text.value_map(6)
        elif kind == "array":
            suffix = self._choices.choice(["[]", "[8]"])
            qualifiers.append("ArrayType ( \"Indexed\" )")
        elif kind == "embedded":
            type_name = "string"
            qualifiers.append(self._embedded())
        elif type_name in DEFAULTS and self._choices.random() < 0.4:
            default = " = " + self._choices.choice(DEFAULTS[type_name])
        if self._choices.random() < 0.25:
            qualifiers.append(self._text.array("ModelCorrespondence", [f"{name}.{known}", "CIM_ManagedElement.Caption"], 6))
        if self._choices.random() < 0.1:
            qualifiers.insert(0, "Write")
        line = f"{type_name} {known}{suffix}{default};"
        self._properties[name][known] = line
        return self._element(qualifiers, line)

    def _embedded(self):
        if self._choices.random() < 0.3:
            return "EmbeddedObject"
        return f'EmbeddedInstance ( "{self._choices.choice(self._by_kind["class"])}" )'

    def _new_methods(self, name, above):
        text = ""
        inherited = {known: line for link in self._lineage(above) for known, line in self._methods[link].items()}
        for known, line in list(inherited.items())[:1] if self._choices.random() < 0.2 else []:
            self._methods[name][known] = line
            text += self._element([f'Override ( "{known}" )', self._text.description(2, 6)], line)
        for _ in range(self._choices.choice([0, 0, 0, 1, 1, 2])):
            known = self._choices.choice(METHODS) + self._choices.choice(NOUNS)
            if known not in inherited and known not in self._methods[name]:
                line = f"uint32 {known}({self._parameters()});"
                self._methods[name][known] = line
                text += self._element([self._text.description(3, 6), *self._text.value_map(6)], line)
        return text

    def _parameters(self):
        parameters = []
        for noun in self._choices.sample(NOUNS, self._choices.randint(0, 4)):
            direction = self._choices.choice([["In"], ["In ( false )", "Out"], ["In", "Out"]])
            reference = self._choices.random() < 0.3
            type_name = self._choices.choice(self._by_kind["class"]) + " REF" if reference else \
                self._choices.choice(SCALARS)
            qualifiers = [*direction, self._text.description(1, 9)]
            suffix = "[]" if self._choices.random() < 0.2 else ""
            parameters.append("\n         [" + ", \n          ".join(qualifiers) + f"]\n      {type_name} {noun}{suffix}")
        return ", ".join(parameters)


def with_heading(name, text):
    rule = "// " + "=" * 68
    return f"// Written by makeschema.py: no class of any published schema.\n{rule}\n//  {name}\n{rule}\n{text}"


def make_files(count, seed):
    """Pairs of path and text, in the order in which schema.mof includes them, and schema.mof itself last."""
    maker = ClassMaker(seed)
    files = [("Core/qualifiers.mof", QUALIFIERS),
             ("Core/CIM_ManagedElement.mof", with_heading("CIM_ManagedElement", ROOT))]
    while len(files) < count - 1 - len(COLLECTOR):
        name, model, text = maker.new_class()
        files.append((f"{model}/{name}.mof", with_heading(name, text)))
    files += [(f"Collector/{name}.mof", with_heading(name, text)) for name, text in COLLECTOR.items()]
    includes = "".join(f'#pragma include ("{path}")\n' for path, _ in files)
    return files + [("schema.mof", '#pragma locale ("en_US")\n' + includes)]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--files", type=int, default=1600)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    files = make_files(arguments.files, arguments.seed)
    size = 0
    for path, text in files:
        target = arguments.folder / path
        target.parent.mkdir(parents=True, exist_ok=True)
        size += target.write_text(text, encoding="utf-8")
    print(f"{len(files) - 2} classes, {len(files)} files, {size} bytes")


if __name__ == "__main__":
    main()
