// api_trace_fmt: the trace record format of every API id, built at compile
// time from the declarations below. A row is "<Name>\n" followed by one line
// per traced argument, "\t<type>     \t<conversion>", lines joined by "\n",
// the last without a line end, NUL-filled to 350 bytes. Row 0 is "\n".
// The type words are printed exactly as written here (the "CONST" and
// "dvoid*" spellings and the odd conversions of rows 157 and 179 included).
#include "trace/trace.h"

namespace {

struct ArgLine {
  const char *type;
  const char *conv;
};
struct ApiDecl {
  int id;
  const char *name;
  ArgLine args[12];
};

constexpr ApiDecl kDecls[] = {
    {1, "QWZEnvCreate", {{"QWZEnv**", "0x%012lX"}, {"ub4", "%u"}}},
    {2, "QWZStmtGetBindInfo", {}},
    {3, "QWZServerAttach", {}},
    {4, "QWZServerDetach", {}},
    {5, "QWZSessionBegin", {}},
    {6, "QWZSessionEnd", {}},
    {7, "QWZLogon", {}},
    {8, "QWZLogon2", {}},
    {9, "QWZLogoff", {}},
    {10, "QWZEnvNlsCreate", {}},
    {11, "QWZConnectionPoolCreate", {}},
    {12, "QWZConnectionPoolDestroy", {}},
    {13, "QWZSessionRelease", {}},
    {14, "QWZSessionGet", {}},
    {15, "QWZLogonNoDb", {}},
    {16, "QWZBindByPos", {}},
    {17, "QWZBindByName", {}},
    {18, "QWZBindDynamic", {}},
    {19, "QWZBindArrayOfStruct", {}},
    {20, "QWZDefineByPos", {}},
    {21, "QWZDefineDynamic", {}},
    {22, "QWZDefineArrayOfStruct", {}},
    {23, "QWZDescribeAny", {}},
    {24, "QWZLobLocatorIsInit", {}},
    {25, "QWZLobIsOpen", {}},
    {26, "QWZLobClose", {}},
    {27, "QWZLobTrim", {}},
    {28, "QWZLobWrite", {}},
    {29, "QWZLobGetLength", {}},
    {30, "QWZLobRead", {}},
    {31, "QWZLobAssign", {}},
    {32, "QWZLobIsEqual", {}},
    {33, "QWZLobGetChunkSize", {}},
    {34, "QWZLobOpen", {}},
    {35, "QWZLobGetLength2", {}},
    {36, "QWZLobRead2", {}},
    {37, "QWZLobCharSetForm", {}},
    {38, "QWZLobCharSetId", {}},
    {39, "QWZLobCreateTemporary", {}},
    {40, "QWZLobIsTemporary", {}},
    {41, "QWZLobFreeTemporary", {}},
    {42, "QWZLobCopy2", {}},
    {43, "QWZLobErase2", {}},
    {44, "QWZLobTrim2", {}},
    {45, "QWZLobWrite2", {}},
    {46, "QWZLobWriteAppend2", {}},
    {47, "QWZLobWriteAppend", {}},
    {48, "QWZLobCopy", {}},
    {49, "QWZLobErase", {}},
    {50, "QWZLobAppend", {}},
    {51, "QWZEnvInit", {}},
    {52, "QWZDirPathPrepare", {}},
    {53, "QWZDirPathColArrayReset", {}},
    {54, "QWZDirPathStreamReset", {}},
    {55, "QWZDirPathColArrayEntrySet", {}},
    {56, "QWZDirPathDataSave", {}},
    {57, "QWZDirPathColArrayToStream", {}},
    {58, "QWZDirPathFinish", {}},
    {59, "QWZDirPathLoadStream", {}},
    {60, "QWZDirPathFlushRow", {}},
    {61, "QWZDirPathAbort", {}},
    {62, "QWZNlsCharSetNameToId", {}},
    {63, "QWZServerVersion", {}},
    {64, "QWZErrorGet", {{"void*", "0x%012lX"}, {"ub4", "%u"}, {"QWZText*", "0x%012lX"}, {"sb4*", "0x%012lX"}, {"QWZText*", "0x%012lX"}, {"ub4", "%u"}, {"ub4", "%u"}}},
    {65, "QWZBreak", {}},
    {66, "QWZPasswordChange", {}},
    {67, "QWZCloseSvcSocket", {}},
    {68, "QWZPing", {}},
    {69, "QWZRowidToChar", {}},
    {70, "QWZServerSession", {}},
    {71, "QWZThreadClose", {}},
    {72, "QWZThreadCreate", {}},
    {73, "QWZThreadHndDestroy", {}},
    {74, "QWZThreadHndInit", {}},
    {75, "QWZThreadIdDestroy", {}},
    {76, "QWZThreadIdInit", {}},
    {77, "QWZThreadInit", {}},
    {78, "QWZThreadJoin", {}},
    {79, "QWZThreadMutexAcquire", {}},
    {80, "QWZThreadMutexDestroy", {}},
    {81, "QWZThreadMutexInit", {}},
    {82, "QWZThreadMutexRelease", {}},
    {83, "QWZThreadTerm", {}},
    {84, "QWZThreadIdSame", {}},
    {85, "QWZThreadIdGet", {}},
    {86, "QWZThreadIdNull", {}},
    {87, "QWZThreadIdSet", {}},
    {88, "QWZThreadIdSetNull", {}},
    {89, "QWZTransCommit", {}},
    {90, "QWZTransStart", {}},
    {91, "QWZTransRollback", {}},
    {92, "QWZDescriptorAlloc", {{"const void*", "0x%012lX"}, {"void**", "0x%012lX"}, {"ub4", "%u"}}},
    {93, "QWZDescriptorFree", {{"void*", "0x%012lX"}, {"ub4", "%u"}}},
    {94, "QWZAttrSet", {}},
    {95, "QWZHandleAlloc", {{"const void*", "0x%012lX"}, {"void**", "0x%012lX"}, {"ub4", "%u"}}},
    {96, "QWZHandleFree", {{"void*", "0x%012lX"}, {"ub4", "%u"}}},
    {97, "QWZParamGet", {}},
    {98, "QWZParamSet", {}},
    {99, "QWZAttrGet", {}},
    {100, "QWZStringAssignText", {}},
    {101, "QWZStringPtr", {}},
    {102, "QWZStringSize", {}},
    {103, "QWZStringAllocSize", {}},
    {104, "QWZStringAssign", {}},
    {105, "QWZStringResize", {}},
    {106, "QWZNumberFromInt", {}},
    {107, "QWZNumberToInt", {}},
    {108, "QWZNumberToReal", {{"QWZError*", "0x%012lX"}, {"const QWZNumber*", "0x%012lX"}, {"uword", "%u"}, {"void*", "0x%012lX"}}},
    {109, "QWZNumberFromReal", {{"QWZError*", "0x%012lX"}, {"const void*", "0x%012lX"}, {"uword", "%u"}, {"QWZNumber*", "0x%012lX"}}},
    {110, "QWZNumberToRealArray", {}},
    {111, "QWZNumberAdd", {}},
    {112, "QWZNumberSub", {}},
    {113, "QWZNumberCmp", {}},
    {114, "QWZNumberAssign", {}},
    {115, "QWZNumberMul", {}},
    {116, "QWZNumberDiv", {}},
    {117, "QWZNumberTrunc", {}},
    {118, "QWZNumberRound", {}},
    {119, "QWZNumberAbs", {}},
    {120, "QWZNumberSign", {}},
    {121, "QWZNumberNeg", {}},
    {122, "QWZNumberIsInt", {}},
    {123, "QWZNumberIsZero", {}},
    {124, "QWZNumberSetZero", {}},
    {125, "QWZNumberFloor", {}},
    {126, "QWZNumberCeil", {}},
    {127, "QWZNumberSqrt", {}},
    {128, "QWZDateAddDays", {{"QWZError*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"sb4", "%d"}, {"QWZDate*", "0x%012lX"}}},
    {129, "QWZDateAddMonths", {{"QWZError*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"sb4", "%d"}, {"QWZDate*", "0x%012lX"}}},
    {130, "QWZDateAssign", {{"QWZError*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"QWZDate*", "0x%012lX"}}},
    {131, "QWZDateCheck", {{"QWZError*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"uword*", "0x%012lX"}}},
    {132, "QWZDateCompare", {{"QWZError*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"sword", "0x%012lX"}}},
    {133, "QWZDateDaysBetween", {{"QWZError*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"sb4", "0x%012lX"}}},
    {134, "QWZDateFromText", {{"QWZError*", "0x%012lX"}, {"const QWZtext*", "%s"}, {"ub4", "%u"}, {"const QWZtext*", "%s"}, {"ub1", "%u"}, {"const QWZtext*", "%s"}, {"ub4", "%u"}, {"QWZDate*", "0x%012lX"}}},
    {135, "QWZDateLastDay", {{"QWZError*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"QWZDate*", "0x%012lX"}}},
    {136, "QWZDateNextDay", {{"QWZError*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"const QWZtext*", "%s"}, {"ub4", "%u"}, {"QWZDate*", "0x%012lX"}}},
    {137, "QWZDateSysDate", {{"QWZError*", "0x%012lX"}, {"QWZDate*", "0x%012lX"}}},
    {138, "QWZDateToText", {{"QWZError*", "0x%012lX"}, {"const QWZDate*", "0x%012lX"}, {"const QWZtext*", "%s"}, {"ub1", "%u"}, {"const QWZtext*", "%s"}, {"ub4", "%u"}, {"ub4*", "0x%012lX"}, {"QWZtext*", "%s"}}},
    {139, "QWZDateTimeIntervalAdd", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}}},
    {140, "QWZDateTimeIntervalSub", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}}},
    {141, "QWZDateTimeSubtract", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}}},
    {142, "QWZDateTimeConstruct", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}, {"sb2", "%d"}, {"ub1", "%u"}, {"ub1", "%u"}, {"ub1", "%u"}, {"ub1", "%u"}, {"ub1", "%u"}, {"ub4", "%u"}, {"QWZText*", "%s"}, {"size_t", "%zu"}}},
    {143, "QWZDateTimeGetDate", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"const QWZDateTime*", "0x%012lX"}, {"sb2*", "0x%012lX"}, {"ub1*", "0x%012lX"}, {"ub1*", "0x%012lX"}}},
    {144, "QWZDateTimeGetTime", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}, {"ub1*", "0x%012lX"}, {"ub1*", "0x%012lX"}, {"ub1*", "0x%012lX"}, {"ub4*", "0x%012lX"}}},
    {145, "QWZDateTimeGetTimeZoneOffset", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"const QWZDateTime*", "0x%012lX"}, {"sb1*", "0x%012lX"}, {"sb1*", "0x%012lX"}}},
    {146, "QWZDateTimeAssign", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"const QWZDateTime*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}}},
    {147, "QWZDateTimeCheck", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"const QWZDateTime*", "0x%012lX"}, {"ub4*", "0x%012lX"}}},
    {148, "QWZDateTimeCompare", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"const QWZDateTime*", "0x%012lX"}, {"const QWZDateTime*", "0x%012lX"}, {"sword*", "0x%012lX"}}},
    {149, "QWZDateTimeToText", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"const QWZDateTime*", "0x%012lX"}, {"const QWZtext*", "%s"}, {"ub1", "%u"}, {"ub1", "%u"}, {"const QWZtext*", "%s"}, {"size_t", "%zu"}, {"ub4*", "0x%012lX"}, {"QWZtext*", "%s"}}},
    {150, "QWZIntervalSetYearMonth", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"sb4", "%d"}, {"sb4", "%d"}, {"QWZInterval*", "0x%012lX"}}},
    {151, "QWZIntervalSetDaySecond", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"sb4", "%d"}, {"sb4", "%d"}, {"sb4", "%d"}, {"sb4", "%d"}, {"sb4", "%d"}, {"QWZInterval*", "0x%012lX"}}},
    {152, "QWZIntervalGetYearMonth", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"sb4*", "0x%012lX"}, {"sb4*", "0x%012lX"}, {"const QWZInterval*", "0x%012lX"}}},
    {153, "QWZIntervalGetDaySecond", {{"dvoid*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"sb4*", "0x%012lX"}, {"sb4*", "0x%012lX"}, {"sb4*", "0x%012lX"}, {"sb4*", "0x%012lX"}, {"sb4*", "0x%012lX"}, {"CONST QWZInterval*", "0x%012lX"}}},
    {154, "QWZIntervalCheck", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"const QWZInterval*", "0x%012lX"}, {"ub4*", "0x%012lX"}}},
    {155, "QWZIntervalAssign", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"const QWZInterval*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}}},
    {156, "QWZIntervalCompare", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"const QWZInterval*", "0x%012lX"}, {"const QWZInterval*", "0x%012lX"}, {"sword*", "0x%012lX"}}},
    {157, "QWZIntervalToText", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"CONST QWZInterval*", "0x%012lX"}, {"ub1", "0x%012lX"}, {"ub1", "0x%012lX"}, {"QWZtext*", "0x%012lX"}, {"size_t", "%zu"}, {"size_t*", "0x%012lX"}}},
    {158, "QWZIntervalSubtract", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}}},
    {159, "QWZIntervalAdd", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}}},
    {160, "QWZIntervalFromText", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"const QWZText*", "%s"}, {"size_t", "%zu"}, {"QWZInterval*", "0x%012lX"}}},
    {161, "QWZTransStop", {}},
    {162, "QWZStmtPrepare", {}},
    {163, "QWZStmtPrepare2", {}},
    {164, "QWZStmtExecute", {}},
    {165, "QWZStmtFetch", {}},
    {166, "QWZStmtRelease", {}},
    {167, "QWZStmtFetch2", {}},
    {168, "QWZStmtSetPieceInfo", {}},
    {169, "QWZStmtGetPieceInfo", {}},
    {170, "QWZStmtExecDirect", {}},
    {171, "QWZInitialize", {}},
    {172, "QWZLobLoctorAssign", {}},
    {173, "QWZStmtPrepareWithSvc", {}},
    {174, "QWZStmtFetchWithSvc", {}},
    {175, "QWZDateTimeSysTimeStamp", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}}},
    {176, "QWZDateTimeGetTimeZoneName", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}, {"ub1*", "0x%012lX"}, {"ub4*", "0x%012lX"}}},
    {177, "QWZDateTimeConvert", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}}},
    {178, "QWZDateTimeToArray", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZDateTime*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"ub1*", "0x%012lX"}, {"ub4*", "0x%012lX"}, {"ub1", "%u"}}},
    {179, "QWZDateTimeFromText", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZText*", "%s"}, {"size_t", "%u"}, {"QWZText*", "%s"}, {"ub1", "%u"}, {"QWZText*", "%s"}, {"size_t", "%u"}, {"QWZDateTime*", "0x%012lX"}}},
    {180, "QWZDateTimeFromArray", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"ub1*", "0x%012lX"}, {"ub4*", "0x%012lX"}, {"ub1", "%u"}, {"QWZDateTime*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"ub1", "%u"}}},
    {181, "QWZIntervalDivide", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"QWZNumber*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}}},
    {182, "QWZIntervalMultiply", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"QWZNumber*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}}},
    {183, "QWZIntervalFromNumber", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"QWZNumber*", "0x%012lX"}}},
    {184, "QWZIntervalToNumber", {{"void*", "0x%012lX"}, {"QWZError*", "0x%012lX"}, {"QWZInterval*", "0x%012lX"}, {"QWZNumber*", "0x%012lX"}}},
    {185, "QWZDateZoneToZone", {{"QWZError*", "0x%012lX"}, {"QWZDate*", "0x%012lX"}, {"QWZText*", "%s"}, {"ub4", "%u"}, {"QWZText*", "%s"}, {"ub4", "%u"}, {"QWZDate*", "0x%012lX"}}},
};

struct Table {
  char rows[QWZ_TRACE_ROWS][QWZ_TRACE_ROW_BYTES];
};

constexpr void append(char (&row)[QWZ_TRACE_ROW_BYTES], int &at, const char *s) {
  while (*s) row[at++] = *s++;
}

constexpr Table build() {
  Table t{};
  t.rows[0][0] = '\n';
  for (const ApiDecl &d : kDecls) {
    auto &row = t.rows[d.id];
    int at = 0;
    append(row, at, "<");
    append(row, at, d.name);
    append(row, at, ">");
    for (const ArgLine &a : d.args) {
      if (a.type == nullptr) break;
      append(row, at, "\n\t");
      append(row, at, a.type);
      append(row, at, "     \t");
      append(row, at, a.conv);
    }
    if (at == static_cast<int>(1 + __builtin_strlen(d.name) + 1)) append(row, at, "\n");
  }
  return t;
}

constexpr Table kTable = build();

constexpr bool row_is(int id, const char *text) {
  int i = 0;
  for (; text[i]; ++i)
    if (kTable.rows[id][i] != text[i]) return false;
  return kTable.rows[id][i] == '\0';
}
static_assert(row_is(128, "<QWZDateAddDays>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t"
                          "0x%012lX\n\tsb4     \t%d\n\tQWZDate*     \t0x%012lX"));
static_assert(row_is(136, "<QWZDateNextDay>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t"
                          "0x%012lX\n\tconst QWZtext*     \t%s\n\tub4     \t%u\n\tQWZDate*     \t"
                          "0x%012lX"));

}  // namespace

const char (&api_trace_fmt)[QWZ_TRACE_ROWS][QWZ_TRACE_ROW_BYTES] = kTable.rows;
