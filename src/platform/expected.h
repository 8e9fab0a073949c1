// A value, or why there is none. Shaped like the standard library's later `expected`, so that it
// can be exchanged for it, but that an error needs no wrapping: it is never of the value's type
// here.
#pragma once

#include <optional>
#include <utility>
#include <variant>

template <typename T, typename E>
class [[nodiscard]] Expected {
public:
    Expected(T value) : content_(std::in_place_index<0>, std::move(value)) {}
    Expected(E error) : content_(std::in_place_index<1>, std::move(error)) {}

    explicit operator bool() const { return content_.index() == 0; }
    // The value; only when there is one.
    const T& operator*() const { return *std::get_if<0>(&content_); }
    const T* operator->() const { return std::get_if<0>(&content_); }
    // Why there is no value; only then.
    const E& error() const { return *std::get_if<1>(&content_); }

private:
    std::variant<T, E> content_;
};

template <typename E>
class [[nodiscard]] Expected<void, E> {
public:
    Expected() = default;
    Expected(E error) : error_(std::move(error)) {}

    explicit operator bool() const { return !error_; }
    const E& error() const { return *error_; }

private:
    std::optional<E> error_;
};
