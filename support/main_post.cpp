#include "support/main_post.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

namespace morvane {

namespace {

// Lives on the main thread from the start of the application object to the beginning of its end.
class Receiver : public QObject {
protected:
    void customEvent(QEvent* wakeUp) override;
};

struct Mailbox {
    std::mutex mutex;
    // Guarded by `mutex`. Posting the wake-up under the lock keeps the receiver alive meanwhile.
    std::deque<std::function<void()>> waiting;
    std::unique_ptr<Receiver> receiver;
    bool wakeUpPosted = false;
};

Mailbox& mailbox() {
    static auto* const box = new Mailbox;  // never destroyed: threads may still post at exit
    return *box;
}

// Runs what was waiting when it began; later work gets a wake-up of its own, so that a stream of
// posts cannot keep other events away. Taking one piece at a time keeps the order even when a
// piece runs the event loop.
void Receiver::customEvent(QEvent*) {
    Mailbox& box = mailbox();
    std::size_t count = 0;
    {
        const std::lock_guard lock(box.mutex);
        box.wakeUpPosted = false;
        count = box.waiting.size();
    }
    for (; count > 0; --count) {
        std::function<void()> work;
        {
            const std::lock_guard lock(box.mutex);
            if (box.waiting.empty())
                break;
            work = std::move(box.waiting.front());
            box.waiting.pop_front();
        }
        work();
    }
}

void closeMailbox() {
    Mailbox& box = mailbox();
    std::deque<std::function<void()>> dropped;
    std::unique_ptr<Receiver> receiver;
    {
        const std::lock_guard lock(box.mutex);
        dropped.swap(box.waiting);
        receiver = std::move(box.receiver);
        box.wakeUpPosted = false;
    }
}

void openMailbox() {
    {
        Mailbox& box = mailbox();
        const std::lock_guard lock(box.mutex);
        box.receiver = std::make_unique<Receiver>();
    }
    qAddPostRoutine(closeMailbox);
}

}  // namespace

void postToMain(std::function<void()> work) {
    Mailbox& box = mailbox();
    const std::lock_guard lock(box.mutex);
    if (!box.receiver)
        return;
    box.waiting.push_back(std::move(work));
    if (box.wakeUpPosted)
        return;
    box.wakeUpPosted = true;
    QCoreApplication::postEvent(box.receiver.get(), new QEvent(QEvent::User));
}

// Called by the constructor of every application object, on its thread.
Q_COREAPP_STARTUP_FUNCTION(openMailbox)

}  // namespace morvane
