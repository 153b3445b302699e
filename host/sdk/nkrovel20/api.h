// Visibility and assertion requirements of all contract headers.
#pragma once

// The shared pointers of this contract report a null dereference to boost::assertion_failed, which the host
// provides. The macro changes exception specifications inside Boost's own headers, so a translation unit
// compiled without it would disagree with the host about the type of operator->.
#ifndef BOOST_ENABLE_ASSERT_HANDLER
#error \
    "compile against the contract with BOOST_ENABLE_ASSERT_HANDLER defined (the CMake target and the pkg-config file do)"
#endif

// Everything that crosses the boundary between plugin and host has default visibility, so that exceptions and
// dynamic casts see the same type on both sides.
#define NKROVEL20_API __attribute__((visibility("default")))
