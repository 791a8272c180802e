#pragma once

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

namespace loopback {

/// What is wrong with a scenario, as "place: reason".
class ScenarioError final : public std::runtime_error {
public:
    ScenarioError(const std::string &place, const std::string &reason) : std::runtime_error(place + ": " + reason) {}
};

/// Reads the keys of one JSON object and remembers which ones; end() rejects all others, so that a
/// misspelt key does not go unnoticed. Throws ScenarioError with the key's path.
class JsonObject final {
public:
    using Json = nlohmann::json;

    JsonObject(const Json &value, std::string path) : m_value(value), m_path(std::move(path))
    {
        if (!value.is_object())
            throw ScenarioError(m_path.empty() ? "the file" : m_path, "must be an object");
    }

    bool has(const char *key) const { return m_value.contains(key); }
    std::string place(const char *key) const { return m_path.empty() ? key : m_path + '.' + key; }

    /// The value of a key, null when it is not there.
    const Json *find(const char *key)
    {
        m_known.insert(key);
        const auto found = m_value.find(key);
        return found == m_value.end() ? nullptr : &*found;
    }

    [[noreturn]] void fail(const char *key, const std::string &reason) const
    {
        throw ScenarioError(place(key), reason);
    }

    bool boolean(const char *key, bool otherwise)
    {
        const Json *value = find(key);
        if (value == nullptr)
            return otherwise;
        if (!value->is_boolean())
            fail(key, "must be true or false");
        return value->get<bool>();
    }

    std::int64_t integer(const char *key, std::int64_t otherwise, std::int64_t least, std::int64_t most)
    {
        const Json *value = find(key);
        if (value == nullptr)
            return otherwise;
        const std::string range =
            "must be a whole number from " + std::to_string(least) + " to " + std::to_string(most);
        if (!value->is_number_integer())
            fail(key, range);
        const bool tooBig =
            value->is_number_unsigned()
            && value->get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        if (tooBig || value->get<std::int64_t>() < least || value->get<std::int64_t>() > most)
            fail(key, range);
        return value->get<std::int64_t>();
    }

    std::int32_t integer32(const char *key, std::int32_t otherwise,
                           std::int32_t least = std::numeric_limits<std::int32_t>::min(),
                           std::int32_t most = std::numeric_limits<std::int32_t>::max())
    {
        return static_cast<std::int32_t>(integer(key, otherwise, least, most));
    }

    double number(const char *key, double otherwise, double least, double most)
    {
        const Json *value = find(key);
        if (value == nullptr)
            return otherwise;
        const double got = value->is_number() ? value->get<double>() : std::nan("");
        if (!(got >= least && got <= most))
            fail(key, "must be a number from " + Json(least).dump() + " to " + Json(most).dump());
        return got;
    }

    /// Milliseconds in the file, nanoseconds here. At most 1000 days.
    std::int64_t milliseconds(const char *key, std::int64_t otherwiseNs)
    {
        constexpr double mostMs = 86'400'000.0 * 1000.0;
        constexpr double nsPerMs = 1e6;
        return has(key) ? std::llround(number(key, 0.0, 0.0, mostMs) * nsPerMs) : (find(key), otherwiseNs);
    }

    std::string text(const char *key, const std::string &otherwise)
    {
        const Json *value = find(key);
        if (value == nullptr)
            return otherwise;
        if (!value->is_string())
            fail(key, "must be a text");
        return value->get<std::string>();
    }

    /// One of a few words; returns its position.
    std::size_t word(const char *key, std::initializer_list<const char *> words, std::size_t otherwise)
    {
        const Json *value = find(key);
        if (value == nullptr)
            return otherwise;
        std::string list;
        std::size_t index = 0;
        for (const char *candidate : words) {
            if (value->is_string() && value->get<std::string>() == candidate)
                return index;
            list += (index == 0 ? "" : ", ") + std::string(candidate);
            ++index;
        }
        fail(key, value->dump() + " is not one of " + list);
    }

    void need(const char *key) const
    {
        if (!has(key))
            fail(key, "is missing");
    }

    void end() const
    {
        for (const auto &item : m_value.items()) {
            if (m_known.count(item.key()) == 0)
                fail(item.key().c_str(), "is not a key that is known here");
        }
    }

private:
    const Json &m_value;
    std::string m_path;
    std::set<std::string> m_known;
};

} // namespace loopback
