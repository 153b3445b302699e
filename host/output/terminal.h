// What is known of the terminal that a descriptor leads to.
#pragma once

namespace NKROVEL20 {

bool IsTerminal(int descriptor);

/// Columns of the terminal; where it is none or does not say, the variable COLUMNS, or else 80.
int TerminalWidth(int descriptor);

}  // namespace NKROVEL20
