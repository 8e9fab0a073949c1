// A result that machines read is held against its schema.
#pragma once

#include "support/paths.h"
#include "support/temp_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

// Whether a value is of a type of JSON schema.
inline bool isOfType(const std::string& type, const nlohmann::json& value) {
    return type == "integer" ? value.is_number_integer() : type == value.type_name();
}

// The first place where a value is not as a schema wants it; empty for none. Knows the words that
// the schema of results is written in.
inline std::string schemaFault(const nlohmann::json& schema, const nlohmann::json& value,
                               const std::string& place = "") {
    using Json = nlohmann::json;
    Json types = schema.value("type", Json::array());
    types = types.is_array() ? types : Json::array({types});
    const auto fits = [&](const Json& type) { return isOfType(type, value); };
    if (!types.empty() && std::none_of(types.begin(), types.end(), fits)) {
        return place + " is not " + types.dump();
    }
    if (const Json all = schema.value("enum", Json::array({value}));
        std::find(all.begin(), all.end(), value) == all.end()) {
        return place + " is none of " + all.dump();
    }
    if (value.is_array()) {
        for (const Json& item : value) {
            if (std::string fault = schemaFault(schema["items"], item, place + "[]");
                !fault.empty()) {
                return fault;
            }
        }
    }
    if (!value.is_object()) {
        return "";
    }
    for (const Json& name : schema["required"]) {
        if (!value.contains(name)) {
            return place + " lacks " + name.dump();
        }
    }
    for (const auto& [name, field] : value.items()) {
        std::string inside = place;
        inside.append(".").append(name);
        if (!schema["properties"].contains(name)) {
            return inside + " is not known";
        }
        std::string fault = schemaFault(schema["properties"][name], field, inside);
        if (!fault.empty()) {
            return fault;
        }
    }
    return "";
}

inline nlohmann::json validResult(const std::string& text) {
    auto found = nlohmann::json::parse(text);
    const auto schema = nlohmann::json::parse(readFile(builtFolder() / "result.schema.json"));
    EXPECT_EQ(schemaFault(schema, found), "");
    return found;
}
