#include "WatchedDirectory.h"

#include <utility>

namespace tidemark {

std::string WatchedDirectory::path() const
{
    if (parent == nullptr)
        return name;
    std::string path = parent->path();
    if (path.back() != '/')
        path += '/';
    return path += name;
}

std::shared_ptr<WatchedDirectory> WatchedDirectory::child(std::string_view childName) const
{
    const auto found = children.find(childName);
    return found == children.end() ? nullptr : *found;
}

WatchedDirectory& WatchedDirectory::add(
    std::string_view childName, WatchGroup& childGroup, std::string childHandle)
{
    auto child = std::make_shared<WatchedDirectory>();
    child->parent = this;
    child->name = childName;
    child->group = &childGroup;
    child->handle = std::move(childHandle);
    return **children.insert(std::move(child)).first;
}

void WatchedDirectory::detach()
{
    if (parent == nullptr)
        return;
    WatchedDirectory& oldParent = *std::exchange(parent, nullptr);
    oldParent.children.erase(oldParent.children.find(std::string_view{name}));
}

const WatchedDirectory& WatchedDirectory::top() const
{
    return parent == nullptr ? *this : parent->top();
}

bool WatchedDirectory::isWithin(const WatchedDirectory& other) const
{
    return this == &other || (parent != nullptr && parent->isWithin(other));
}

}  // namespace tidemark
