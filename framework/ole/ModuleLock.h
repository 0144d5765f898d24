// What keeps an in-process server loaded: the COM objects it has handed out
// and the locks that clients took through IClassFactory::LockServer.
// DllCanUnloadNow answers from these two counts.
#pragma once

namespace framework::ole {

long ObjectCount();
long LockCount();
void LockModule();
void UnlockModule();
// True when no object is alive and no lock is held.
bool CanUnloadModule();

// A member of every COM object of the module: counts the object for as long
// as it lives.
class ObjectCounter {
public:
    ObjectCounter();
    ~ObjectCounter();
    ObjectCounter(const ObjectCounter&) = delete;
    ObjectCounter& operator=(const ObjectCounter&) = delete;
};

}  // namespace framework::ole
