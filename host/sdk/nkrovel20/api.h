// Visibility and assertion rules that every contract header relies on.
#pragma once

// The shared pointers of this contract report a null dereference to boost::assertion_failed, which
// the host supplies. The macro changes exception specifications inside Boost's own headers, so a
// translation unit without it would disagree with the host about the type of operator->.
#ifndef BOOST_ENABLE_ASSERT_HANDLER
#error \
    "compile against the contract with BOOST_ENABLE_ASSERT_HANDLER defined (the CMake target and the pkg-config file do)"
#endif

// Everything that crosses the line between a plugin and the host has default visibility, so that
// exceptions and dynamic casts see one type on both sides.
#define NKROVEL20_API __attribute__((visibility("default")))
