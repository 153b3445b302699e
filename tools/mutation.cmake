# Build rules for the preset "mutation". They make a change of a collector source cost only one compilation
# and a small link: the parts are a shared library with a precompiled header.

function(prepare_for_mutation)
  set_target_properties(torgareg_parts PROPERTIES CXX_VISIBILITY_PRESET default VISIBILITY_INLINES_HIDDEN OFF)
  # The host libraries that the parts call come from each test program, which replaces some of them.
  target_link_options(torgareg_parts PRIVATE -Wl,-z,undefs)
  target_precompile_headers(torgareg_parts PRIVATE
    <algorithm> <array> <boost/function.hpp> <boost/shared_ptr.hpp> <map> <memory> <string> <vector>
    <nkrovel20/icimobjects.h> <nkrovel20/iplugincallbacks.h> <nkrovel20/splibrary.h>
    <nkrovel20/taddtovectorcallback.h> <nkrovel20/tcimschemahelper.h> <nkrovel20/tosspecific.h>
    <nkrovel20/tpluginmanagernamespace.h> <nkrovel20/tvelexception.h>)
endfunction()

cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL prepare_for_mutation)
