#pragma once

#include <stddef.h>
#include <vcruntime_exception.h>

class type_info
{
public:
    type_info(const type_info&) = delete;
    type_info& operator=(const type_info&) = delete;
    virtual ~type_info() noexcept;
    size_t hash_code() const noexcept;
    bool operator==(const type_info&) const noexcept;
    bool before(const type_info&) const noexcept;
    const char* name() const noexcept;
    const char* raw_name() const noexcept;

private:
    void* data_[2];
};

namespace std {

using ::type_info;

class bad_cast : public exception
{
public:
    bad_cast() noexcept;
    explicit bad_cast(const char*) noexcept;
};

class bad_typeid : public exception
{
public:
    bad_typeid() noexcept;
    explicit bad_typeid(const char*) noexcept;
};

} // namespace std
