// Test support: a picture as a page takes it apart.
#pragma once

#include "pictures/Picture.h"

#include <nlohmann/json.hpp>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class Taken_Picture {
public:
    explicit Taken_Picture(const view::Picture& picture) {
        std::uint32_t length = 0;
        std::memcpy(&length, picture.data(), sizeof(length));
        const std::size_t begin = sizeof(length) + length;
        m_head = nlohmann::json::parse(picture.data() + sizeof(length), picture.data() + begin);
        m_values.resize((picture.size() - begin) / sizeof(float));
        if (!m_values.empty()) {
            std::memcpy(m_values.data(), picture.data() + begin, m_values.size() * sizeof(float));
        }
    }

    const nlohmann::json& head() const { return m_head; }

    // Of the block with this name.
    std::vector<float> values(const std::string& name) const {
        for (const auto& block : m_head.at("blocks")) {
            if (block.at("name") == name) {
                const auto begin = m_values.begin() + block.at("offset").get<std::ptrdiff_t>();
                const auto size =
                    block.at("rows").get<std::ptrdiff_t>() * block.at("columns").get<std::ptrdiff_t>();
                return {begin, begin + size};
            }
        }
        throw std::out_of_range("there is no block " + name);
    }

private:
    nlohmann::json m_head;
    std::vector<float> m_values;
};

} // namespace Pelgar::ORBE::test
