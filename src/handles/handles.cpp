// Allocation, ownership and validation of handles and descriptors.
//
// Slots are carved from chunks that stay mapped for the life of the process:
// a freed slot goes back on its size class's free list with its live marker
// overwritten, so validating a stale pointer reads our own memory and fails
// cleanly. An environment keeps its handles and descriptors on a list and
// frees them all when it is freed itself.
#include "handles/handles.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

struct QWZEnv {
  qwz_handle_header hdr;
  std::mutex lock;                  // guards the owned list
  qwz_handle_header *owned_head;
};

namespace {

// ---- slot pool -----------------------------------------------------------
constexpr std::size_t kSlotAlign = 64;
constexpr std::size_t kClasses = 64;        // slots up to 64 * 64 bytes
constexpr std::size_t kChunkBytes = 64 * 1024;

struct FreeSlot {
  qwz_handle_header hdr;  // keeps the dead marker readable where validators look
  FreeSlot *next;
};

struct Pool {
  std::mutex lock;
  FreeSlot *free_list[kClasses] = {};
  unsigned char *chunk = nullptr;  // current chunk and its unused tail
  std::size_t chunk_left = 0;
  void **chunks = nullptr;          // every chunk, kept reachable for the process's life
  std::size_t nchunks = 0, cap = 0;
};

Pool &pool() {
  static Pool p;
  return p;
}

std::size_t size_class(std::size_t bytes) { return (bytes + kSlotAlign - 1) / kSlotAlign; }

void *slot_alloc(std::size_t bytes) {
  const std::size_t cls = size_class(bytes);
  if (cls == 0 || cls >= kClasses) return nullptr;
  Pool &p = pool();
  std::lock_guard<std::mutex> g(p.lock);
  if (FreeSlot *s = p.free_list[cls]) {
    p.free_list[cls] = s->next;
    return s;
  }
  const std::size_t need = cls * kSlotAlign;
  if (p.chunk_left < need) {
    if (p.nchunks == p.cap) {
      std::size_t ncap = p.cap ? p.cap * 2 : 16;
      void **n = static_cast<void **>(std::realloc(p.chunks, ncap * sizeof(void *)));
      if (!n) return nullptr;
      p.chunks = n;
      p.cap = ncap;
    }
    void *c = std::aligned_alloc(kSlotAlign, kChunkBytes);
    if (!c) return nullptr;
    p.chunks[p.nchunks++] = c;
    p.chunk = static_cast<unsigned char *>(c);
    p.chunk_left = kChunkBytes;
  }
  void *s = p.chunk;
  p.chunk += need;
  p.chunk_left -= need;
  return s;
}

void slot_free(void *slot, std::size_t bytes) {
  const std::size_t cls = size_class(bytes);
  Pool &p = pool();
  std::lock_guard<std::mutex> g(p.lock);
  // The dead marker is written here, into the free slot itself, after the
  // object's lifetime has ended: a store into the object before its
  // destructor ran (an environment's) may be dropped by the optimiser as
  // dead, which left freed environments validating as live.
  auto *s = new (slot) FreeSlot;
  s->hdr.live = QWZ_DEAD_MARK;
  s->hdr.type = 0;
  s->next = p.free_list[cls];
  p.free_list[cls] = s;
}

std::atomic<long> g_live_descriptors{0};

// ---- type table ------------------------------------------------------------
bool is_datetime_type(ub4 t) { return qwz_is_datetime_type(t); }
bool is_interval_type(ub4 t) { return qwz_is_interval_type(t); }
bool is_descriptor_type(ub4 t) { return is_datetime_type(t) || is_interval_type(t); }

std::size_t object_size(ub4 type) {
  switch (type) {
    case QWZ_HTYPE_ENV: return sizeof(QWZEnv);
    case QWZ_HTYPE_ERROR: return sizeof(QWZError);
    case QWZ_HTYPE_SESSION: return sizeof(QWZSession);
    default:
      if (is_datetime_type(type)) return sizeof(QWZDateTime);
      if (is_interval_type(type)) return sizeof(QWZInterval);
      return 0;
  }
}

const qwz_handle_header *live_header(const void *h) { return qwz_live_header(h); }

QWZEnv *live_env(const void *h) {
  const qwz_handle_header *hdr = live_header(h);
  if (!hdr || hdr->type != QWZ_HTYPE_ENV) return nullptr;
  return const_cast<QWZEnv *>(static_cast<const QWZEnv *>(h));
}

// Environment of a parent given to an allocator: an environment, or a session.
QWZEnv *parent_env(const void *parent, bool session_too) {
  if (QWZEnv *e = live_env(parent)) return e;
  const qwz_handle_header *hdr = live_header(parent);
  if (session_too && hdr && hdr->type == QWZ_HTYPE_SESSION) return hdr->env;
  return nullptr;
}

void *owned_alloc(QWZEnv *env, ub4 type) {
  const std::size_t size = object_size(type);
  void *mem = slot_alloc(size);
  if (!mem) return nullptr;
  std::memset(mem, 0, size);
  auto *hdr = static_cast<qwz_handle_header *>(mem);
  hdr->type = static_cast<ub2>(type);
  hdr->env = env;
  {
    std::lock_guard<std::mutex> g(env->lock);
    hdr->owned_next = env->owned_head;
    if (env->owned_head) env->owned_head->owned_prev = hdr;
    env->owned_head = hdr;
  }
  if (is_descriptor_type(type)) g_live_descriptors.fetch_add(1, std::memory_order_relaxed);
  hdr->live = QWZ_LIVE_MARK;
  return mem;
}

void release(qwz_handle_header *hdr) {
  const ub4 type = hdr->type;
  hdr->live = QWZ_DEAD_MARK;
  if (is_descriptor_type(type)) g_live_descriptors.fetch_sub(1, std::memory_order_relaxed);
  slot_free(hdr, object_size(type));
}

void owned_free(qwz_handle_header *hdr) {
  QWZEnv *env = hdr->env;
  {
    std::lock_guard<std::mutex> g(env->lock);
    if (hdr->owned_prev) hdr->owned_prev->owned_next = hdr->owned_next;
    else env->owned_head = hdr->owned_next;
    if (hdr->owned_next) hdr->owned_next->owned_prev = hdr->owned_prev;
  }
  release(hdr);
}

void env_free(QWZEnv *env) {
  qwz_handle_header *h;
  {
    std::lock_guard<std::mutex> g(env->lock);
    h = env->owned_head;
    env->owned_head = nullptr;
  }
  while (h) {
    qwz_handle_header *next = h->owned_next;
    release(h);
    h = next;
  }
  env->hdr.live = QWZ_DEAD_MARK;
  env->~QWZEnv();
  slot_free(env, sizeof(QWZEnv));
}

}  // namespace

extern "C" {

QWZ_API sword QWZEnvCreate(QWZEnv **envhpp, ub4 mode) {
  if (envhpp == nullptr || mode != 0) return QWZ_ERROR;
  void *mem = slot_alloc(sizeof(QWZEnv));
  if (!mem) return QWZ_ERROR;
  auto *env = new (mem) QWZEnv();
  env->hdr.type = QWZ_HTYPE_ENV;
  env->hdr.env = env;
  env->owned_head = nullptr;
  env->hdr.live = QWZ_LIVE_MARK;
  *envhpp = env;
  return QWZ_SUCCESS;
}

QWZ_API sword QWZHandleAlloc(const void *parenth, void **hndlpp, ub4 type) {
  QWZEnv *env = live_env(parenth);
  if (!env) return QWZ_INVALID_HANDLE;
  if (hndlpp == nullptr || (type != QWZ_HTYPE_ERROR && type != QWZ_HTYPE_SESSION)) return QWZ_ERROR;
  void *h = owned_alloc(env, type);
  if (!h) return QWZ_ERROR;
  *hndlpp = h;
  return QWZ_SUCCESS;
}

QWZ_API sword QWZHandleFree(void *hndlp, ub4 type) {
  if (type != QWZ_HTYPE_ENV && type != QWZ_HTYPE_ERROR && type != QWZ_HTYPE_SESSION)
    return QWZ_INVALID_HANDLE;
  if (qwz_validate_handle(hndlp, type) != 0) return QWZ_INVALID_HANDLE;
  auto *hdr = static_cast<qwz_handle_header *>(hndlp);
  if (type == QWZ_HTYPE_ENV) env_free(static_cast<QWZEnv *>(hndlp));
  else owned_free(hdr);
  return QWZ_SUCCESS;
}

QWZ_API sword QWZDescriptorAlloc(const void *parenth, void **descpp, ub4 type) {
  QWZEnv *env = parent_env(parenth, true);
  if (!env) return QWZ_INVALID_HANDLE;
  if (descpp == nullptr || !is_descriptor_type(type)) return QWZ_ERROR;
  void *d = owned_alloc(env, type);
  if (!d) return QWZ_ERROR;
  *descpp = d;
  return QWZ_SUCCESS;
}

QWZ_API sword QWZDescriptorFree(void *descp, ub4 type) {
  if (!is_descriptor_type(type) || qwz_validate_handle(descp, type) != 0) return QWZ_INVALID_HANDLE;
  owned_free(static_cast<qwz_handle_header *>(descp));
  return QWZ_SUCCESS;
}

sword qwz_validate_handle(const void *handle, ub4 type) { return qwz_handle_check(handle, type); }

sword qwz_validate_datetime_handle(const void *descriptor) {
  return qwz_datetime_handle_check(descriptor);
}

sword qwz_validate_interval_handle(const void *descriptor) {
  return qwz_interval_handle_check(descriptor);
}

QWZDateTime *qwz_datetime_descriptor_alloc(QWZEnv *env, ub2 type) {
  if (!live_env(env) || !is_datetime_type(type)) return nullptr;
  return static_cast<QWZDateTime *>(owned_alloc(env, type));
}

sword _QWZDateTimeDescriptorFree(QWZDateTime *descriptor) {
  if (qwz_validate_datetime_handle(descriptor) != 0) return QWZ_INVALID_HANDLE;
  owned_free(&descriptor->hdr);
  return QWZ_SUCCESS;
}

QWZInterval *_QWZIntervalDescriptorAlloc(QWZEnv *env, ub2 type) {
  if (!live_env(env) || !is_interval_type(type)) return nullptr;
  return static_cast<QWZInterval *>(owned_alloc(env, type));
}

sword _QWZIntervalDescriptorFree(QWZInterval *descriptor) {
  if (qwz_validate_interval_handle(descriptor) != 0) return QWZ_INVALID_HANDLE;
  owned_free(&descriptor->hdr);
  return QWZ_SUCCESS;
}

QWZEnv *qwz_handle_env(const void *handle) {
  const qwz_handle_header *hdr = live_header(handle);
  return hdr ? hdr->env : nullptr;
}

ub2 qwz_get_last_day_of_month(const QWZDateTime *datetime) {
  return qwz_last_day_of_month(datetime->year, datetime->month);
}

long qwz_live_descriptor_count(void) { return g_live_descriptors.load(std::memory_order_relaxed); }

}  // extern "C"
