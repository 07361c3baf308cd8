#pragma once

#include <QCoreApplication>
#include <QMetaObject>
#include <QThreadPool>

#include <exception>
#include <functional>
#include <variant>

// The engine's one way to leave the main thread: the work runs on the
// thread pool, and its outcome is handed to `then` on the main thread.
namespace Converter::detail {

template <typename T> using Result = std::variant<T, std::exception_ptr>;

void ensureWorkers();

template <typename T> void background(std::function<T()> work, std::function<void(Result<T>)> then)
{
    ensureWorkers();
    QThreadPool::globalInstance()->start([work = std::move(work), then = std::move(then)]() {
        Result<T> result = std::exception_ptr();
        try {
            result = work();
        } catch (...) {
            result = std::current_exception();
        }
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [then, result]() { then(result); }, Qt::QueuedConnection);
    });
}

} // namespace Converter::detail
