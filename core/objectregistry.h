#pragma once

#include "core/failure.h"

#include <QString>
#include <functional>
#include <map>
#include <memory>

namespace corvane {

// Base of every outside component created by class identifier.
class Component {
public:
    virtual ~Component() = default;
};

// CreateObject by class identifier ("ORVZipLib.ClsMain"). Our implementations
// register themselves; tests remove or replace one to reach the paths where a
// component cannot be created.
class ObjectRegistry {
public:
    using Factory = std::function<std::shared_ptr<Component>()>;

    static ObjectRegistry& instance();

    void registerClass(const QString& classId, Factory factory);
    void unregisterClass(const QString& classId);
    bool has(const QString& classId) const;

    // Throws Failure 429 when the class is unknown or does not offer T.
    template <typename T>
    std::shared_ptr<T> create(const QString& classId) const
    {
        auto object = std::dynamic_pointer_cast<T>(createComponent(classId));
        if (!object)
            throw Failure(err::CannotCreateObject, kSource, QStringLiteral("ActiveX component can't create object"));
        return object;
    }

    std::shared_ptr<Component> createComponent(const QString& classId) const;

private:
    std::map<QString, Factory> factories_;
};

template <typename T>
std::shared_ptr<T> CreateObject(const QString& classId)
{
    return ObjectRegistry::instance().create<T>(classId);
}

} // namespace corvane
