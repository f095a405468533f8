#include "Tests/Support/LockWatch.h"

#include <atomic>

#include <pthread.h>

namespace {

thread_local int held = 0;
std::atomic<int> mostHeld{0};

/// Counts a mutex that the calling thread has got, or not; passes on which.
int Taken(int result)
{
    if (result == 0) {
        ++held;
        int most = mostHeld;
        while (most < held && !mostHeld.compare_exchange_weak(most, held)) {
        }
    }
    return result;
}

} // namespace

int locks::Held()
{
    return held;
}

int locks::MostHeld()
{
    return mostHeld;
}

void locks::Reset()
{
    mostHeld = 0;
}

// The linker gives these the callers' calls, and the real ones the names beginning with "__real_".
// A wait on a condition gives its mutex up and takes it again: that needs no counting.

extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __real_pthread_mutex_trylock(pthread_mutex_t* mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex)
{
    return Taken(__real_pthread_mutex_lock(mutex));
}

int __wrap_pthread_mutex_trylock(pthread_mutex_t* mutex)
{
    return Taken(__real_pthread_mutex_trylock(mutex));
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex)
{
    --held;
    return __real_pthread_mutex_unlock(mutex);
}

} // extern "C"
