#include "core/objectregistry.h"

namespace corvane {

ObjectRegistry& ObjectRegistry::instance()
{
    static ObjectRegistry registry;
    return registry;
}

static QString normalised(const QString& classId)
{
    return classId.trimmed().toLower();
}

void ObjectRegistry::registerClass(const QString& classId, Factory factory)
{
    factories_[normalised(classId)] = std::move(factory);
}

void ObjectRegistry::unregisterClass(const QString& classId)
{
    factories_.erase(normalised(classId));
}

bool ObjectRegistry::has(const QString& classId) const
{
    return factories_.count(normalised(classId)) != 0;
}

std::shared_ptr<Component> ObjectRegistry::createComponent(const QString& classId) const
{
    const auto it = factories_.find(normalised(classId));
    if (it == factories_.end())
        throw Failure(err::CannotCreateObject, kSource, QStringLiteral("ActiveX component can't create object"));
    auto object = it->second();
    if (!object)
        throw Failure(err::CannotCreateObject, kSource, QStringLiteral("ActiveX component can't create object"));
    return object;
}

} // namespace corvane
