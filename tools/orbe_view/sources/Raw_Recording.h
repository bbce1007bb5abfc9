// Program orbe-view, sources. A raw recording, whole or still growing. Used as A_Recording says; a thread of
// its index reads the whole file besides, and looks whether more comes.
#pragma once

#include "sources/A_Recording.h"
#include "sources/Recording_Index.h"
#include "sources/Recording_Player.h"

#include <array>
#include <filesystem>
#include <memory>

namespace Pelgar::ORBE::view {

class Raw_Recording final : public A_Recording {
public:
    // `may_grow`: somebody may be writing it.
    Raw_Recording(const std::filesystem::path& file, bool may_grow,
                  recorder::Recording_Description description, const Growth_Patience& patience = {});

    std::string name() const override { return m_file.filename().string(); }

    const recorder::Recording_Description& description() const override { return m_description; }

    bool grows() const override { return m_index.grows(); }

    std::string problem() const override { return m_index.problem(); }

    std::size_t size() const override { return m_index.size(); }

    std::optional<std::uint64_t> begin_of(std::size_t piece) const override;

    std::size_t piece_of(std::uint64_t sample) const override { return m_index.piece_of(sample); }

    std::uint64_t length() const override { return m_index.length(); }

    double known_part() const override { return m_index.known_part(); }

    std::vector<Damage_Counts> damage(std::size_t stretches) const override {
        return m_index.damage(stretches);
    }

    // Pieces are short.
    std::uint64_t burst() const override { return 0; }

    void look() override {} // its index does

    void begin(std::size_t piece, Histories& histories) override;
    bool show_next(Histories& histories) override;

    std::size_t next() const override;

    Health health_of(std::size_t begin, std::size_t end, const Histories& histories) override;

private:
    const std::filesystem::path m_file;
    const recorder::Recording_Description m_description;
    Recording_Index m_index;

    // Of the source's thread.
    std::unique_ptr<Recording_Player> m_player;
    std::array<std::uint64_t, port_count> m_health_lost{};
};

} // namespace Pelgar::ORBE::view
