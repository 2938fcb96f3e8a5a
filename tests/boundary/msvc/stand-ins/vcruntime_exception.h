#pragma once

namespace std {

class exception
{
public:
    exception() noexcept;
    explicit exception(const char*) noexcept;
    exception(const char*, int) noexcept;
    exception(const exception&) noexcept;
    exception& operator=(const exception&) noexcept;
    virtual ~exception() noexcept;
    virtual const char* what() const noexcept;

private:
    void* data_[2];
};

class bad_exception : public exception
{
public:
    bad_exception() noexcept;
};

class bad_alloc : public exception
{
public:
    bad_alloc() noexcept;
};

class bad_array_new_length : public bad_alloc
{
public:
    bad_array_new_length() noexcept;
};

} // namespace std
