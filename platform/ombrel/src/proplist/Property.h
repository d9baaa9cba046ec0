#pragma once

#include <memory>
#include <string>
#include <variant>

#include <ombrel/proplist/PropList.h>

namespace ombrel::proplist {

/// A sub-list at a place of its own, so that references to it outlive changes of the list around it; copies
/// are deep.
class SubList
{
public:
    SubList() : mList(std::make_unique<PropList>()) {}
    SubList(const SubList& inOther) : mList(std::make_unique<PropList>(*inOther.mList)) {}
    SubList(SubList&&) noexcept = default;
    SubList& operator=(SubList inOther) noexcept
    {
        mList = std::move(inOther.mList);
        return *this;
    }
    ~SubList() = default;

    PropList& Get() const { return *mList; }
    bool operator==(const SubList& inOther) const { return *mList == *inOther.mList; }

private:
    std::unique_ptr<PropList> mList;
};

/// The order of the alternatives is that of `PropertyType`.
using Value = std::variant<std::monostate, bool, std::int32_t, std::uint32_t, std::int64_t, std::uint64_t,
                           float, double, std::string, SubList>;

struct PropList::Property
{
    std::string mName;
    Value mValue;

    bool operator==(const Property&) const = default;
};

} // namespace ombrel::proplist
