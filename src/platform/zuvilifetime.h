#pragma once

#include <QObject>
#include <QPointer>

#include <utility>

// Binds a callback to the lifetime of the object it works on.
//
// A screen may be popped and deleted while its requests, image loads and
// delayed calls are still under way (a request can take twenty seconds, and
// the navigation stack deletes a popped screen a moment later). Every
// completion that touches a screen or one of its parts is wrapped here, so an
// answer that arrives after its owner is gone does nothing:
//
//     client->fetchVideoDetailWithBVID(bvid, ZuviLifetime::bound(this,
//         [this](const ZuviVideoDetail &detail, const ZuviError &error) { ... }));
//
// The wrapper keeps a QPointer to the owner and calls the callback only while
// the owner exists; the callback may then use `this` freely. Timers and
// delayed calls get the same guarantee from the scheduler, which takes the
// owner as the receiver of every call.
class ZuviLifetime
{
public:
    ZuviLifetime() = delete;

    template <typename Owner, typename Callback> static auto bound(Owner *owner, Callback callback)
    {
        static_assert(std::is_base_of_v<QObject, Owner>, "only a QObject has a lifetime to follow");
        return [guard = QPointer<Owner>(owner),
                callback = std::move(callback)](auto &&...arguments) mutable {
            if (!guard)
                return;
            callback(std::forward<decltype(arguments)>(arguments)...);
        };
    }

    // True while the owner lives: for a chain of steps that checks once
    // before each step rather than wrapping every callback.
    template <typename Owner> static QPointer<Owner> watch(Owner *owner)
    {
        return QPointer<Owner>(owner);
    }
};
