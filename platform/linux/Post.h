#pragma once

#include <QMetaObject>
#include <QObject>

#include <utility>

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

// Runs the function in the receiver's thread, when its event loop gets there; not at all when the
// receiver is gone by then. From any thread. All that was done before is done for the function,
// too; a thread sanitizer is told so, since it sees nothing of what happens inside Qt.
template<typename Function>
void postTo(QObject *receiver, Function function)
{
#ifdef __SANITIZE_THREAD__
    __tsan_release(receiver);
    QMetaObject::invokeMethod(
        receiver,
        [receiver, function = std::move(function)]() mutable {
            __tsan_acquire(receiver);
            function();
        },
        Qt::QueuedConnection);
#else
    QMetaObject::invokeMethod(receiver, std::move(function), Qt::QueuedConnection);
#endif
}
