"""Classes, qualifiers and properties as the collector model sees them."""

from dataclasses import dataclass, field

from modelvalues import value_of


@dataclass
class Property:
    """A property declaration; qualifiers maps names to plain Python values."""

    name: str
    type: str = "uint8"
    is_array: bool = True
    qualifiers: dict = field(default_factory=dict)


@dataclass
class CimClass:
    """A class declaration with the properties declared in it."""

    name: str
    superclass: str = None
    qualifiers: dict = field(default_factory=dict)
    properties: list = field(default_factory=list)


@dataclass
class PropertyDeclaration:
    """What enumerating the properties of a class yields."""

    name: str
    origin: str
    qualifiers: dict
    type: str = "uint8"
    is_array: bool = True

    def __post_init__(self):
        self.values = {name.lower(): value_of(plain) for name, plain in self.qualifiers.items()}

    def qualifier(self, name):
        return self.values.get(name.lower())


def find_qualifier(qualifiers, name):
    """The value of the named qualifier, or None (the empty pointer)."""
    for key, plain in qualifiers.items():
        if key.lower() == name.lower():
            return value_of(plain)
    return None


class Schema:
    """Classes in declaration order; restricted lists the qualifiers that subclasses do not inherit.

    disabled lists qualifiers that have a meaning, and have none here because they are declared with another type.
    """

    def __init__(self, classes, restricted=(), disabled=()):
        self.classes = list(classes)
        self.restricted = {name.lower() for name in restricted}
        self.disabled = {name.lower() for name in disabled}
        self.by_name = {cls.name.lower(): cls for cls in self.classes}
        self.declarations = {}  # by class name, once they have been asked for

    def find(self, name):
        return self.by_name.get(name.lower())

    def parent(self, cls):
        return self.find(cls.superclass) if cls.superclass else None

    def lineage(self, cls):
        """The class and its ancestors, the root class first."""
        line = []
        while cls is not None:
            line.insert(0, cls)
            cls = self.parent(cls)
        return line

    def descendants(self, cls):
        """All descendants, in declaration order."""
        return [other for other in self.classes
                if other is not cls and any(step is cls for step in self.lineage(other))]

    def class_qualifier(self, cls, name):
        """The class's own qualifier, otherwise one inherited according to its flavor, otherwise None."""
        own = find_qualifier(cls.qualifiers, name)
        parent = self.parent(cls)
        if own is not None or parent is None or name.lower() in self.restricted:
            return own
        return self.class_qualifier(parent, name)

    def property_declarations(self, cls):
        """Inherited properties first; an overriding one keeps the position and origin of the first declaration."""
        if cls.name not in self.declarations:
            self.declarations[cls.name] = self.find_declarations(cls)
        return self.declarations[cls.name]

    def find_declarations(self, cls):
        found = {}
        for step in self.lineage(cls):
            for prop in step.properties:
                first = found.get(prop.name.lower())
                origin = first.origin if first else step.name
                qualifiers = self.overriding(first.qualifiers, prop.qualifiers) if first else prop.qualifiers
                found[prop.name.lower()] = PropertyDeclaration(prop.name, origin, qualifiers, prop.type, prop.is_array)
        return list(found.values())

    def overriding(self, inherited, own):
        """The qualifiers of an overriding property: its own, and the others that it inherits by their flavor."""
        hidden = self.restricted | {name.lower() for name in own}
        return {**{name: value for name, value in inherited.items() if name.lower() not in hidden}, **own}
