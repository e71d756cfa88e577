// Handles and descriptors: the layouts every unit shares, and the allocator
// and validators behind QWZEnvCreate, QWZHandleAlloc and QWZDescriptorAlloc.
//
// Every handle and descriptor starts with qwz_handle_header: a live-marker
// word, the ub2 type code and the owning environment. Slots come from a pool
// that is never handed back to the C library, so a freed handle still reads
// as memory of ours and fails validation instead of faulting.
#ifndef QWZ_HANDLES_HANDLES_H
#define QWZ_HANDLES_HANDLES_H

#include <qwz/qwz.h>

#include <cstddef>
#include <cstdint>

#ifndef QWZ_INTERNAL
#define QWZ_INTERNAL __attribute__((visibility("hidden")))
#endif

inline constexpr ub4 QWZ_LIVE_MARK = 0x51575A4Cu;  // "QWZL"
inline constexpr ub4 QWZ_DEAD_MARK = 0x44454144u;  // "DEAD"

struct qwz_handle_header {
  ub4 live;                        // QWZ_LIVE_MARK while allocated
  ub2 type;                        // handle or descriptor type code
  ub2 reserved;
  QWZEnv *env;                     // owning environment (an environment owns itself)
  qwz_handle_header *owned_prev;   // sibling links in the owner's list
  qwz_handle_header *owned_next;
};

// Error handle: one diagnostic at a time.
inline constexpr std::size_t QWZ_ERROR_MESSAGE_SIZE = 2048;
struct QWZError {
  qwz_handle_header hdr;
  sb4 number;
  char state[6];                   // five characters and NUL (or four and NUL)
  char message[QWZ_ERROR_MESSAGE_SIZE];
};

struct QWZSession {
  qwz_handle_header hdr;
};

// Datetime descriptor. The six calendar fields sit exactly like a QWZDate,
// so a QWZDate is copied into or out of &year as one block.
struct QWZDateTime {
  qwz_handle_header hdr;
  sb2 year;
  ub2 month;
  ub2 day;
  ub2 hour;
  ub2 minute;
  ub2 second;
  ub4 fraction;
  sb1 tz_hour;
  sb1 tz_minute;
};
static_assert(offsetof(QWZDateTime, second) - offsetof(QWZDateTime, year) ==
              offsetof(QWZDate, second));

// Interval descriptor: five signed 32-bit slots whose meaning follows the kind.
enum qwz_interval_slot : int {
  QWZ_IV_YEAR = 0,   // kind 62
  QWZ_IV_MONTH = 1,  // kind 62
  QWZ_IV_DAY = 0,    // kind 63
  QWZ_IV_HOUR = 1,
  QWZ_IV_MINUTE = 2,
  QWZ_IV_SECOND = 3,
  QWZ_IV_FRACTION = 4,  // 1/100000 second
};
struct QWZInterval {
  qwz_handle_header hdr;
  sb4 slot[5];
};

// The tests behind the validators below, inline so that the call frame of
// every public function can run them without a call: a live header is a
// non-NULL, suitably aligned pointer whose first word is the live marker.
// Slots are never handed back to the C library, so reading the marker of a
// stale handle reads memory of ours.
inline const qwz_handle_header *qwz_live_header(const void *h) {
  if (h == nullptr ||
      reinterpret_cast<std::uintptr_t>(h) % alignof(qwz_handle_header) != 0)
    return nullptr;
  const auto *hdr = static_cast<const qwz_handle_header *>(h);
  return hdr->live == QWZ_LIVE_MARK ? hdr : nullptr;
}
inline bool qwz_is_datetime_type(ub4 t) {
  return t >= DATETIME_KIND_DATE && t <= DATETIME_KIND_TIMESTAMP_LTZ;
}
inline bool qwz_is_interval_type(ub4 t) {
  return t == INTERVAL_KIND_YM || t == INTERVAL_KIND_DS;
}
inline sword qwz_handle_check(const void *handle, ub4 type) {
  const qwz_handle_header *hdr = qwz_live_header(handle);
  return (hdr && hdr->type == type) ? 0 : QWZ_INVALID_HANDLE;
}
inline sword qwz_datetime_handle_check(const void *descriptor) {
  const qwz_handle_header *hdr = qwz_live_header(descriptor);
  return (hdr && qwz_is_datetime_type(hdr->type)) ? 0 : QWZ_INVALID_HANDLE;
}
inline sword qwz_interval_handle_check(const void *descriptor) {
  const qwz_handle_header *hdr = qwz_live_header(descriptor);
  return (hdr && qwz_is_interval_type(hdr->type)) ? 0 : QWZ_INVALID_HANDLE;
}

extern "C" {

// 0 for a live handle of `type`, QWZ_INVALID_HANDLE for NULL, a freed handle
// or another type.
QWZ_INTERNAL sword qwz_validate_handle(const void *handle, ub4 type);
// 0 for a live datetime descriptor (types 65..70).
QWZ_INTERNAL sword qwz_validate_datetime_handle(const void *descriptor);
// 0 for a live interval descriptor (kinds 62 and 63).
QWZ_INTERNAL sword qwz_validate_interval_handle(const void *descriptor);

// Descriptors for the module's temporaries: value fields 0, owned by `env`.
// NULL when env is not a live environment, the type is out of range or memory
// runs out.
QWZ_INTERNAL QWZDateTime *qwz_datetime_descriptor_alloc(QWZEnv *env, ub2 type);
QWZ_INTERNAL sword _QWZDateTimeDescriptorFree(QWZDateTime *descriptor);
QWZ_INTERNAL QWZInterval *_QWZIntervalDescriptorAlloc(QWZEnv *env, ub2 type);
QWZ_INTERNAL sword _QWZIntervalDescriptorFree(QWZInterval *descriptor);

// The environment that owns a live handle or descriptor; NULL otherwise.
QWZ_INTERNAL QWZEnv *qwz_handle_env(const void *handle);

// Length of the datetime's month in its year (month 1..12, leap years by the
// Gregorian rule for every year); 0 for a month outside 1..12.
QWZ_INTERNAL ub2 qwz_get_last_day_of_month(const QWZDateTime *datetime);
}  // extern "C"
// The same for a year and a month, inline.
inline ub2 qwz_last_day_of_month(int year, unsigned month) {
  constexpr ub1 kDays[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  if (month != 2) return kDays[month];
  return (year % 4 == 0 && (year % 100 != 0 || year % 400 == 0)) ? 29 : 28;
}
extern "C" {

// Number of datetime and interval descriptors currently allocated, process-wide.
QWZ_INTERNAL long qwz_live_descriptor_count(void);

}  // extern "C"

#endif  // QWZ_HANDLES_HANDLES_H
