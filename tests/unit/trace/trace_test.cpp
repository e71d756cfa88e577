// The trace unit: the table of record formats byte for byte, the formatting
// of each conversion from its argument word, the hook, and the default sink
// (a file named by QWZ_TRACE_FILE, else stderr).
#include "support/test_support.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using namespace qwz_test;

namespace {

struct RowText {
  int id;
  const char *text;
};

// Every row of the date, datetime and interval functions, written out.
const RowText kModuleRows[] = {
    {128, "<QWZDateAddDays>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tsb4     \t%d\n\tQWZDate*     \t0x%012lX"},
    {129, "<QWZDateAddMonths>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tsb4     \t%d\n\tQWZDate*     \t0x%012lX"},
    {130, "<QWZDateAssign>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tQWZDate*     \t0x%012lX"},
    {131, "<QWZDateCheck>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tuword*     \t0x%012lX"},
    {132, "<QWZDateCompare>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tsword     \t0x%012lX"},
    {133, "<QWZDateDaysBetween>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tsb4     \t0x%012lX"},
    {134, "<QWZDateFromText>\n\tQWZError*     \t0x%012lX\n\tconst QWZtext*     \t%s\n\tub4     \t%u\n\tconst QWZtext*     \t%s\n\tub1     \t%u\n\tconst QWZtext*     \t%s\n\tub4     \t%u\n\tQWZDate*     \t0x%012lX"},
    {135, "<QWZDateLastDay>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tQWZDate*     \t0x%012lX"},
    {136, "<QWZDateNextDay>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tconst QWZtext*     \t%s\n\tub4     \t%u\n\tQWZDate*     \t0x%012lX"},
    {137, "<QWZDateSysDate>\n\tQWZError*     \t0x%012lX\n\tQWZDate*     \t0x%012lX"},
    {138, "<QWZDateToText>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tconst QWZtext*     \t%s\n\tub1     \t%u\n\tconst QWZtext*     \t%s\n\tub4     \t%u\n\tub4*     \t0x%012lX\n\tQWZtext*     \t%s"},
    {139, "<QWZDateTimeIntervalAdd>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX"},
    {140, "<QWZDateTimeIntervalSub>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX"},
    {141, "<QWZDateTimeSubtract>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX"},
    {142, "<QWZDateTimeConstruct>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX\n\tsb2     \t%d\n\tub1     \t%u\n\tub1     \t%u\n\tub1     \t%u\n\tub1     \t%u\n\tub1     \t%u\n\tub4     \t%u\n\tQWZText*     \t%s\n\tsize_t     \t%zu"},
    {143, "<QWZDateTimeGetDate>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tconst QWZDateTime*     \t0x%012lX\n\tsb2*     \t0x%012lX\n\tub1*     \t0x%012lX\n\tub1*     \t0x%012lX"},
    {144, "<QWZDateTimeGetTime>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX\n\tub1*     \t0x%012lX\n\tub1*     \t0x%012lX\n\tub1*     \t0x%012lX\n\tub4*     \t0x%012lX"},
    {145, "<QWZDateTimeGetTimeZoneOffset>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tconst QWZDateTime*     \t0x%012lX\n\tsb1*     \t0x%012lX\n\tsb1*     \t0x%012lX"},
    {146, "<QWZDateTimeAssign>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tconst QWZDateTime*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX"},
    {147, "<QWZDateTimeCheck>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tconst QWZDateTime*     \t0x%012lX\n\tub4*     \t0x%012lX"},
    {148, "<QWZDateTimeCompare>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tconst QWZDateTime*     \t0x%012lX\n\tconst QWZDateTime*     \t0x%012lX\n\tsword*     \t0x%012lX"},
    {149, "<QWZDateTimeToText>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tconst QWZDateTime*     \t0x%012lX\n\tconst QWZtext*     \t%s\n\tub1     \t%u\n\tub1     \t%u\n\tconst QWZtext*     \t%s\n\tsize_t     \t%zu\n\tub4*     \t0x%012lX\n\tQWZtext*     \t%s"},
    {150, "<QWZIntervalSetYearMonth>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tsb4     \t%d\n\tsb4     \t%d\n\tQWZInterval*     \t0x%012lX"},
    {151, "<QWZIntervalSetDaySecond>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tsb4     \t%d\n\tsb4     \t%d\n\tsb4     \t%d\n\tsb4     \t%d\n\tsb4     \t%d\n\tQWZInterval*     \t0x%012lX"},
    {152, "<QWZIntervalGetYearMonth>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tsb4*     \t0x%012lX\n\tsb4*     \t0x%012lX\n\tconst QWZInterval*     \t0x%012lX"},
    {153, "<QWZIntervalGetDaySecond>\n\tdvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tsb4*     \t0x%012lX\n\tsb4*     \t0x%012lX\n\tsb4*     \t0x%012lX\n\tsb4*     \t0x%012lX\n\tsb4*     \t0x%012lX\n\tCONST QWZInterval*     \t0x%012lX"},
    {154, "<QWZIntervalCheck>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tconst QWZInterval*     \t0x%012lX\n\tub4*     \t0x%012lX"},
    {155, "<QWZIntervalAssign>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tconst QWZInterval*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX"},
    {156, "<QWZIntervalCompare>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tconst QWZInterval*     \t0x%012lX\n\tconst QWZInterval*     \t0x%012lX\n\tsword*     \t0x%012lX"},
    {157, "<QWZIntervalToText>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tCONST QWZInterval*     \t0x%012lX\n\tub1     \t0x%012lX\n\tub1     \t0x%012lX\n\tQWZtext*     \t0x%012lX\n\tsize_t     \t%zu\n\tsize_t*     \t0x%012lX"},
    {158, "<QWZIntervalSubtract>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX"},
    {159, "<QWZIntervalAdd>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX"},
    {160, "<QWZIntervalFromText>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tconst QWZText*     \t%s\n\tsize_t     \t%zu\n\tQWZInterval*     \t0x%012lX"},
    {175, "<QWZDateTimeSysTimeStamp>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX"},
    {176, "<QWZDateTimeGetTimeZoneName>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX\n\tub1*     \t0x%012lX\n\tub4*     \t0x%012lX"},
    {177, "<QWZDateTimeConvert>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX"},
    {178, "<QWZDateTimeToArray>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZDateTime*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tub1*     \t0x%012lX\n\tub4*     \t0x%012lX\n\tub1     \t%u"},
    {179, "<QWZDateTimeFromText>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZText*     \t%s\n\tsize_t     \t%u\n\tQWZText*     \t%s\n\tub1     \t%u\n\tQWZText*     \t%s\n\tsize_t     \t%u\n\tQWZDateTime*     \t0x%012lX"},
    {180, "<QWZDateTimeFromArray>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tub1*     \t0x%012lX\n\tub4*     \t0x%012lX\n\tub1     \t%u\n\tQWZDateTime*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tub1     \t%u"},
    {181, "<QWZIntervalDivide>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tQWZNumber*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX"},
    {182, "<QWZIntervalMultiply>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tQWZNumber*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX"},
    {183, "<QWZIntervalFromNumber>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tQWZNumber*     \t0x%012lX"},
    {184, "<QWZIntervalToNumber>\n\tvoid*     \t0x%012lX\n\tQWZError*     \t0x%012lX\n\tQWZInterval*     \t0x%012lX\n\tQWZNumber*     \t0x%012lX"},
    {185, "<QWZDateZoneToZone>\n\tQWZError*     \t0x%012lX\n\tQWZDate*     \t0x%012lX\n\tQWZText*     \t%s\n\tub4     \t%u\n\tQWZText*     \t%s\n\tub4     \t%u\n\tQWZDate*     \t0x%012lX"},
};

// The names of the library's other rows.
const RowText kOtherNames[] = {
    {1, "QWZEnvCreate"},
    {2, "QWZStmtGetBindInfo"},
    {3, "QWZServerAttach"},
    {4, "QWZServerDetach"},
    {5, "QWZSessionBegin"},
    {6, "QWZSessionEnd"},
    {7, "QWZLogon"},
    {8, "QWZLogon2"},
    {9, "QWZLogoff"},
    {10, "QWZEnvNlsCreate"},
    {11, "QWZConnectionPoolCreate"},
    {12, "QWZConnectionPoolDestroy"},
    {13, "QWZSessionRelease"},
    {14, "QWZSessionGet"},
    {15, "QWZLogonNoDb"},
    {16, "QWZBindByPos"},
    {17, "QWZBindByName"},
    {18, "QWZBindDynamic"},
    {19, "QWZBindArrayOfStruct"},
    {20, "QWZDefineByPos"},
    {21, "QWZDefineDynamic"},
    {22, "QWZDefineArrayOfStruct"},
    {23, "QWZDescribeAny"},
    {24, "QWZLobLocatorIsInit"},
    {25, "QWZLobIsOpen"},
    {26, "QWZLobClose"},
    {27, "QWZLobTrim"},
    {28, "QWZLobWrite"},
    {29, "QWZLobGetLength"},
    {30, "QWZLobRead"},
    {31, "QWZLobAssign"},
    {32, "QWZLobIsEqual"},
    {33, "QWZLobGetChunkSize"},
    {34, "QWZLobOpen"},
    {35, "QWZLobGetLength2"},
    {36, "QWZLobRead2"},
    {37, "QWZLobCharSetForm"},
    {38, "QWZLobCharSetId"},
    {39, "QWZLobCreateTemporary"},
    {40, "QWZLobIsTemporary"},
    {41, "QWZLobFreeTemporary"},
    {42, "QWZLobCopy2"},
    {43, "QWZLobErase2"},
    {44, "QWZLobTrim2"},
    {45, "QWZLobWrite2"},
    {46, "QWZLobWriteAppend2"},
    {47, "QWZLobWriteAppend"},
    {48, "QWZLobCopy"},
    {49, "QWZLobErase"},
    {50, "QWZLobAppend"},
    {51, "QWZEnvInit"},
    {52, "QWZDirPathPrepare"},
    {53, "QWZDirPathColArrayReset"},
    {54, "QWZDirPathStreamReset"},
    {55, "QWZDirPathColArrayEntrySet"},
    {56, "QWZDirPathDataSave"},
    {57, "QWZDirPathColArrayToStream"},
    {58, "QWZDirPathFinish"},
    {59, "QWZDirPathLoadStream"},
    {60, "QWZDirPathFlushRow"},
    {61, "QWZDirPathAbort"},
    {62, "QWZNlsCharSetNameToId"},
    {63, "QWZServerVersion"},
    {64, "QWZErrorGet"},
    {65, "QWZBreak"},
    {66, "QWZPasswordChange"},
    {67, "QWZCloseSvcSocket"},
    {68, "QWZPing"},
    {69, "QWZRowidToChar"},
    {70, "QWZServerSession"},
    {71, "QWZThreadClose"},
    {72, "QWZThreadCreate"},
    {73, "QWZThreadHndDestroy"},
    {74, "QWZThreadHndInit"},
    {75, "QWZThreadIdDestroy"},
    {76, "QWZThreadIdInit"},
    {77, "QWZThreadInit"},
    {78, "QWZThreadJoin"},
    {79, "QWZThreadMutexAcquire"},
    {80, "QWZThreadMutexDestroy"},
    {81, "QWZThreadMutexInit"},
    {82, "QWZThreadMutexRelease"},
    {83, "QWZThreadTerm"},
    {84, "QWZThreadIdSame"},
    {85, "QWZThreadIdGet"},
    {86, "QWZThreadIdNull"},
    {87, "QWZThreadIdSet"},
    {88, "QWZThreadIdSetNull"},
    {89, "QWZTransCommit"},
    {90, "QWZTransStart"},
    {91, "QWZTransRollback"},
    {92, "QWZDescriptorAlloc"},
    {93, "QWZDescriptorFree"},
    {94, "QWZAttrSet"},
    {95, "QWZHandleAlloc"},
    {96, "QWZHandleFree"},
    {97, "QWZParamGet"},
    {98, "QWZParamSet"},
    {99, "QWZAttrGet"},
    {100, "QWZStringAssignText"},
    {101, "QWZStringPtr"},
    {102, "QWZStringSize"},
    {103, "QWZStringAllocSize"},
    {104, "QWZStringAssign"},
    {105, "QWZStringResize"},
    {106, "QWZNumberFromInt"},
    {107, "QWZNumberToInt"},
    {108, "QWZNumberToReal"},
    {109, "QWZNumberFromReal"},
    {110, "QWZNumberToRealArray"},
    {111, "QWZNumberAdd"},
    {112, "QWZNumberSub"},
    {113, "QWZNumberCmp"},
    {114, "QWZNumberAssign"},
    {115, "QWZNumberMul"},
    {116, "QWZNumberDiv"},
    {117, "QWZNumberTrunc"},
    {118, "QWZNumberRound"},
    {119, "QWZNumberAbs"},
    {120, "QWZNumberSign"},
    {121, "QWZNumberNeg"},
    {122, "QWZNumberIsInt"},
    {123, "QWZNumberIsZero"},
    {124, "QWZNumberSetZero"},
    {125, "QWZNumberFloor"},
    {126, "QWZNumberCeil"},
    {127, "QWZNumberSqrt"},
    {161, "QWZTransStop"},
    {162, "QWZStmtPrepare"},
    {163, "QWZStmtPrepare2"},
    {164, "QWZStmtExecute"},
    {165, "QWZStmtFetch"},
    {166, "QWZStmtRelease"},
    {167, "QWZStmtFetch2"},
    {168, "QWZStmtSetPieceInfo"},
    {169, "QWZStmtGetPieceInfo"},
    {170, "QWZStmtExecDirect"},
    {171, "QWZInitialize"},
    {172, "QWZLobLoctorAssign"},
    {173, "QWZStmtPrepareWithSvc"},
    {174, "QWZStmtFetchWithSvc"}
};

unsigned long W(const void *p) { return reinterpret_cast<unsigned long>(p); }
unsigned long W(long v) { return static_cast<unsigned long>(v); }

std::string read_file(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

std::size_t count(const std::string &hay, const std::string &needle) {
  std::size_t n = 0;
  for (std::size_t at = hay.find(needle); at != std::string::npos; at = hay.find(needle, at + 1))
    ++n;
  return n;
}

// Sets or unsets an environment variable for the test's lifetime.
class EnvVar {
 public:
  EnvVar(const char *name, const char *value) : name_(name) {
    if (const char *old = std::getenv(name)) {
      had_ = true;
      old_ = old;
    }
    if (value) setenv(name, value, 1);
    else unsetenv(name);
  }
  ~EnvVar() {
    if (had_) setenv(name_, old_.c_str(), 1);
    else unsetenv(name_);
  }

 private:
  const char *name_;
  bool had_ = false;
  std::string old_;
};

}  // namespace

// ---- the table ---------------------------------------------------------------

TEST(TraceTable, Shape) {
  EXPECT_EQ(sizeof api_trace_fmt, 65100u);
  EXPECT_EQ(sizeof api_trace_fmt[0], 350u);
  EXPECT_EQ(sizeof api_trace_fmt / sizeof api_trace_fmt[0], 186u);
  std::size_t longest = 0;
  for (int id = 0; id < 186; ++id) {
    const char *row = api_trace_fmt[id];
    const std::size_t len = strnlen(row, 350);
    ASSERT_LT(len, 350u) << id;
    ASSERT_GT(len, 0u) << id;
    for (std::size_t i = len; i < 350; ++i) ASSERT_EQ(row[i], '\0') << id << " at " << i;
    longest = std::max(longest, len);
  }
  EXPECT_LE(longest, 306u);
}

TEST(TraceTable, RowZeroIsALineEnd) {
  char expected[350] = {'\n'};
  EXPECT_EQ(0, std::memcmp(api_trace_fmt[0], expected, 350));
}

TEST(TraceTable, Rows128And136ByteForByte) {
  char r128[350] = {};
  const char t128[] =
      "<QWZDateAddDays>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tsb4     "
      "\t%d\n\tQWZDate*     \t0x%012lX";
  std::memcpy(r128, t128, sizeof t128 - 1);
  EXPECT_EQ(0, std::memcmp(api_trace_fmt[128], r128, 350));
  char r136[350] = {};
  const char t136[] =
      "<QWZDateNextDay>\n\tQWZError*     \t0x%012lX\n\tconst QWZDate*     \t0x%012lX\n\tconst "
      "QWZtext*     \t%s\n\tub4     \t%u\n\tQWZDate*     \t0x%012lX";
  std::memcpy(r136, t136, sizeof t136 - 1);
  EXPECT_EQ(0, std::memcmp(api_trace_fmt[136], r136, 350));
}

TEST(TraceTable, EveryModuleRow) {
  EXPECT_EQ(sizeof kModuleRows / sizeof kModuleRows[0], 44u);
  for (const RowText &r : kModuleRows) EXPECT_STREQ(api_trace_fmt[r.id], r.text) << r.id;
}

TEST(TraceTable, EveryOtherRowStartsWithItsName) {
  EXPECT_EQ(sizeof kOtherNames / sizeof kOtherNames[0], 141u);
  for (const RowText &r : kOtherNames) {
    const std::string head = std::string("<") + r.text + ">\n";
    EXPECT_EQ(std::string(api_trace_fmt[r.id]).compare(0, head.size(), head), 0)
        << r.id << ": " << api_trace_fmt[r.id];
  }
}

// Each line of a row with arguments is "\t<type>     \t<conversion>", the
// last without a line end; each conversion is one of the five kinds.
TEST(TraceTable, LinesAreWellFormed) {
  for (int id = 1; id < 186; ++id) {
    std::string row = api_trace_fmt[id];
    const std::size_t first = row.find('\n');
    ASSERT_NE(first, std::string::npos) << id;
    EXPECT_EQ(row.front(), '<') << id;
    EXPECT_EQ(row[first - 1], '>') << id;
    if (first + 1 == row.size()) continue;  // a row without argument lines
    EXPECT_NE(row.back(), '\n') << id;
    std::stringstream lines(row.substr(first + 1));
    std::string line;
    while (std::getline(lines, line)) {
      ASSERT_GE(line.size(), 3u) << id;
      EXPECT_EQ(line[0], '\t') << id;
      const std::size_t sep = line.find("     \t");
      ASSERT_NE(sep, std::string::npos) << id << ": " << line;
      const std::string conv = line.substr(sep + 6);
      EXPECT_TRUE(conv == "0x%012lX" || conv == "%d" || conv == "%u" || conv == "%zu" ||
                  conv == "%s")
          << id << ": " << line;
    }
  }
}

// ---- formatting through the hook ----------------------------------------------

class TraceFormat : public HandleFixture {};

TEST_F(TraceFormat, HookGetsExactlyTheFormattedRow) {
  TraceCapture cap;
  cap.set_results(5, 6);
  QWZDate d{}, r{};
  EXPECT_EQ(qwz_trace(err_, 3, 1, 128, W(err_), W(&d), W(-5L), W(&r)), 5);
  EXPECT_EQ(qwz_trace(err_, -1, 0, 128, W(err_), W(&d), W(-5L), W(&r)), 6);
  ASSERT_EQ(cap.records().size(), 2u);
  const std::string text = "<QWZDateAddDays>\n\tQWZError*     \t" + hex12(err_) +
                           "\n\tconst QWZDate*     \t" + hex12(&d) + "\n\tsb4     \t-5" +
                           "\n\tQWZDate*     \t" + hex12(&r);
  EXPECT_EQ(cap.records()[0].text, text);
  EXPECT_EQ(cap.records()[0].status, 3);
  EXPECT_EQ(cap.records()[0].direction, 1u);
  EXPECT_EQ(cap.records()[0].api_id, 128u);
  EXPECT_EQ(cap.records()[0].errhp, err_);
  EXPECT_EQ(cap.records()[1].text, text);
  EXPECT_EQ(cap.records()[1].status, -1);
  EXPECT_EQ(cap.records()[1].direction, 0u);
}

TEST_F(TraceFormat, Conversions) {
  TraceCapture cap;
  const char text[] = "wednesday";
  // %d: negative values, whether the word was sign-extended or not.
  qwz_trace(err_, 0, 1, 128, W(nullptr), W(reinterpret_cast<void *>(0xABCDEF)),
            W(static_cast<long>(INT_MIN)), W(reinterpret_cast<void *>(~0UL)));
  qwz_trace(err_, 0, 1, 128, 0UL, 1UL, 0xFFFFFFFBUL, 0x123456789ABCUL);
  // %s, NULL %s and %u.
  qwz_trace(err_, 0, 1, 136, 1UL, 2UL, W(text), 4294967295UL, 3UL);
  qwz_trace(err_, 0, 1, 136, 1UL, 2UL, 0UL, 0UL, 3UL);
  // %d of an sb2, %u of ub1 and ub4, %s and %zu.
  qwz_trace(err_, 0, 1, 142, 0x10UL, 0x20UL, 0x30UL, W(-4712L), 12UL, 31UL, 23UL, 59UL, 255UL,
            4000000000UL, W("+05:30"), 123456789012UL);
  // %u given a size_t, and 0x%012lX given a ub1.
  qwz_trace(err_, 0, 1, 179, 0UL, 0UL, W("a"), 4294967301UL, W("b"), 7UL, 0UL, 9UL, 0UL);
  qwz_trace(err_, 0, 1, 157, 0UL, 0UL, 0UL, 255UL, 9UL, 0UL, 18446744073709551615UL, 0UL);
  ASSERT_EQ(cap.records().size(), 7u);
  EXPECT_EQ(cap.records()[0].text,
            "<QWZDateAddDays>\n\tQWZError*     \t0x000000000000\n\tconst QWZDate*     "
            "\t0x000000ABCDEF\n\tsb4     \t-2147483648\n\tQWZDate*     \t0xFFFFFFFFFFFFFFFF");
  EXPECT_EQ(cap.records()[1].text,
            "<QWZDateAddDays>\n\tQWZError*     \t0x000000000000\n\tconst QWZDate*     "
            "\t0x000000000001\n\tsb4     \t-5\n\tQWZDate*     \t0x123456789ABC");
  EXPECT_EQ(cap.records()[2].text,
            "<QWZDateNextDay>\n\tQWZError*     \t0x000000000001\n\tconst QWZDate*     "
            "\t0x000000000002\n\tconst QWZtext*     \twednesday\n\tub4     \t4294967295\n\t"
            "QWZDate*     \t0x000000000003");
  EXPECT_EQ(cap.records()[3].text,
            "<QWZDateNextDay>\n\tQWZError*     \t0x000000000001\n\tconst QWZDate*     "
            "\t0x000000000002\n\tconst QWZtext*     \t(null)\n\tub4     \t0\n\t"
            "QWZDate*     \t0x000000000003");
  EXPECT_EQ(cap.records()[4].text,
            "<QWZDateTimeConstruct>\n\tvoid*     \t0x000000000010\n\tQWZError*     "
            "\t0x000000000020\n\tQWZDateTime*     \t0x000000000030\n\tsb2     \t-4712\n\tub1     "
            "\t12\n\tub1     \t31\n\tub1     \t23\n\tub1     \t59\n\tub1     \t255\n\tub4     "
            "\t4000000000\n\tQWZText*     \t+05:30\n\tsize_t     \t123456789012");
  EXPECT_EQ(cap.records()[5].text,
            "<QWZDateTimeFromText>\n\tvoid*     \t0x000000000000\n\tQWZError*     "
            "\t0x000000000000\n\tQWZText*     \ta\n\tsize_t     \t5\n\tQWZText*     \tb\n\tub1 "
            "    \t7\n\tQWZText*     \t(null)\n\tsize_t     \t9\n\tQWZDateTime*     "
            "\t0x000000000000");
  EXPECT_EQ(cap.records()[6].text,
            "<QWZIntervalToText>\n\tvoid*     \t0x000000000000\n\tQWZError*     "
            "\t0x000000000000\n\tCONST QWZInterval*     \t0x000000000000\n\tub1     "
            "\t0x0000000000FF\n\tub1     \t0x000000000009\n\tQWZtext*     \t0x000000000000\n\t"
            "size_t     \t18446744073709551615\n\tsize_t*     \t0x000000000000");
}

TEST_F(TraceFormat, RowZeroAndUnknownIds) {
  TraceCapture cap;
  qwz_trace(err_, 0, 1, 0);
  qwz_trace(err_, 0, 1, 186);
  qwz_trace(err_, 0, 1, 4000000000u);
  ASSERT_EQ(cap.records().size(), 3u);
  for (const TraceRecord &r : cap.records()) EXPECT_EQ(r.text, "\n");
}

// ---- the default sink --------------------------------------------------------

class TraceSink : public HandleFixture {
 protected:
  void SetUp() override {
    HandleFixture::SetUp();
    char path[] = "/tmp/qwz_trace_XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    close(fd);
    path_ = path;
  }
  void TearDown() override {
    qwz_trace_flag = 0;
    QWZTraceSetHook(nullptr);
    std::remove(path_.c_str());
    HandleFixture::TearDown();
  }
  std::string path_;
};

TEST_F(TraceSink, WritesEntryAndExitToTheTraceFile) {
  EnvVar file("QWZ_TRACE_FILE", path_.c_str());
  QWZTraceSetHook(nullptr);
  qwz_trace_flag = 1;
  ZoneGuard z(kUtc);
  const QWZDate d{2024, 1, 31, 0, 0, 0};
  QWZDate r{};
  EXPECT_EQ(QWZDateAddDays(err_, &d, -7, &r), QWZ_SUCCESS);
  qwz_trace_flag = 0;
  const std::string row = "<QWZDateAddDays>\n\tQWZError*     \t" + hex12(err_) +
                          "\n\tconst QWZDate*     \t" + hex12(&d) + "\n\tsb4     \t-7" +
                          "\n\tQWZDate*     \t" + hex12(&r);
  const std::string out = read_file(path_);
  EXPECT_EQ(count(out, row), 2u) << out;
  const std::size_t entry = out.find("ENTRY"), exit = out.find("EXIT");
  ASSERT_NE(entry, std::string::npos) << out;
  ASSERT_NE(exit, std::string::npos) << out;
  EXPECT_LT(entry, exit);
  EXPECT_LT(entry, out.find(row));
  EXPECT_GT(out.rfind(row), exit);
  // qwz_trace itself answers 0 without a hook.
  EXPECT_EQ(qwz_trace(err_, 0, 1, 137, W(err_), W(&r)), 0);
  EXPECT_NE(read_file(path_).find("<QWZDateSysDate>"), std::string::npos);
}

TEST_F(TraceSink, WritesToStderrWithoutATraceFile) {
  EnvVar file("QWZ_TRACE_FILE", nullptr);
  QWZTraceSetHook(nullptr);
  testing::internal::CaptureStderr();
  EXPECT_EQ(qwz_trace(err_, 0, 1, 131, W(err_), 0x10UL, 0x20UL), 0);
  const std::string out = testing::internal::GetCapturedStderr();
  EXPECT_NE(out.find("<QWZDateCheck>\n\tQWZError*     \t" + hex12(err_) +
                     "\n\tconst QWZDate*     \t0x000000000010\n\tuword*     \t0x000000000020"),
            std::string::npos)
      << out;
  EXPECT_NE(out.find("ENTRY"), std::string::npos);
}

int g_hook_calls = 0;
sword count_hook(void *, sword, ub4, ub4, const char *) {
  ++g_hook_calls;
  return 0;
}

TEST_F(TraceSink, SettingNoHookRestoresTheDefaultSink) {
  EnvVar file("QWZ_TRACE_FILE", path_.c_str());
  g_hook_calls = 0;
  QWZTraceSetHook(count_hook);
  qwz_trace(err_, 0, 1, 137, W(err_), 0UL);
  EXPECT_EQ(g_hook_calls, 1);
  EXPECT_EQ(read_file(path_), "");
  QWZTraceSetHook(nullptr);
  qwz_trace(err_, 0, 1, 137, W(err_), 0UL);
  EXPECT_EQ(g_hook_calls, 1);
  EXPECT_EQ(count(read_file(path_), "<QWZDateSysDate>"), 1u);
}

// ---- the switch at load time ---------------------------------------------------

// Run as a child with QWZ_TEST_EXPECT_FLAG set, this checks the switch's
// value at load against it; run normally, it starts such children with
// various QWZ_TRACE values.
TEST(TraceFlag, FromEnvironmentAtLoad) {
  if (const char *want = std::getenv("QWZ_TEST_EXPECT_FLAG")) {
    EXPECT_EQ(qwz_trace_flag != 0, std::atoi(want) != 0);
    return;
  }
  char exe[4096];
  const ssize_t n = readlink("/proc/self/exe", exe, sizeof exe - 1);
  ASSERT_GT(n, 0);
  exe[n] = '\0';
  struct Case {
    const char *value;  // nullptr: unset
    int on;
  } cases[] = {{nullptr, 0}, {"", 0}, {"0", 0}, {"1", 1}, {"7", 1}, {"-1", 1}, {"abc", 0}};
  for (const Case &c : cases) {
    std::string cmd = "env -u QWZ_TRACE ";
    if (c.value) cmd += std::string("QWZ_TRACE='") + c.value + "' ";
    cmd += "QWZ_TEST_EXPECT_FLAG=" + std::to_string(c.on) + " QWZ_TRACE_FILE=/dev/null '" + exe +
           "' --gtest_filter=TraceFlag.FromEnvironmentAtLoad >/dev/null 2>&1";
    const int rc = std::system(cmd.c_str());
    ASSERT_TRUE(WIFEXITED(rc)) << cmd;
    EXPECT_EQ(WEXITSTATUS(rc), 0) << cmd;
  }
}
