#include "framework/ole/ModuleLock.h"

#include <atomic>

namespace framework::ole {

namespace {
// Apartment-bound objects are touched by one thread each, but several
// apartments may share the module.
std::atomic<long> g_objects{0};
std::atomic<long> g_locks{0};
}  // namespace

long ObjectCount() {
    return g_objects.load();
}

long LockCount() {
    return g_locks.load();
}

void LockModule() {
    ++g_locks;
}

void UnlockModule() {
    --g_locks;
}

bool CanUnloadModule() {
    return g_objects.load() == 0 && g_locks.load() == 0;
}

ObjectCounter::ObjectCounter() {
    ++g_objects;
}

ObjectCounter::~ObjectCounter() {
    --g_objects;
}

}  // namespace framework::ole
