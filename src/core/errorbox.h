#pragma once

#include <string>

#include "core/dialogs.h"
#include "core/runtimeerror.h"

namespace fleetwright {

// The common error box of a routine that guards itself: a plain box (OK, no symbol) that names the error and
// the routine, then the routine leaves.
//
//     A runtime error has occured
//
//     Error number: 53
//     Error description: File not found
//     Procedure MakeBackup
//     Line: 0
//     Formular frm_Main
//
// "occured" is spelled as users have always seen it; keep it. The line is always 0: no routine carries line
// numbers.
std::u16string commonErrorText(const RuntimeError &error, const std::u16string &form = u"frm_Main");

// Shows commonErrorText through dialogs.plain, with no title of its own.
void showCommonError(Dialogs &dialogs, const RuntimeError &error, const std::u16string &form = u"frm_Main");

} // namespace fleetwright
