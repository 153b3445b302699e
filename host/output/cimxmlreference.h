// References as CIM-XML elements.
#pragma once

#include <pugixml.hpp>

#include "host/output/objectpath.h"

namespace velhost {

/// Appends a VALUE.REFERENCE with the path. Texts are escaped already: the document has to be
/// written with pugi::format_no_escapes.
void AppendReference(pugi::xml_node parent, const TObjectPath& path);

}  // namespace velhost
