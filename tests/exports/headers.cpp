// Uses the types of all exported headers, so that their layouts are in the debug information.
#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/TScript.h"
#include "DVUtilities/TScriptApi.h"
#include "DVUtilities/TScriptRecords.h"
#include "DVUtilities/commonFunc.h"

__attribute__((visibility("default"))) void useTypes(DBBase&, DVUtilLib&, TScript&, TScriptRecords&,
                                                     DVUCauses&, DVUCause_t&, TScriptEntry_t&, TScriptRun_t&,
                                                     TScriptRunFilter_t&, IdId_t&, IdIdName_t&,
                                                     IdNameItem_t&) {}
