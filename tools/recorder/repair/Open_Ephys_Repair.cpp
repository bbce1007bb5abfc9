#include "repair/Open_Ephys_Repair.h"

#include "description/Whole_File.h"
#include "formats/Npy_File.h"
#include "formats/Open_Ephys_Files.h"
#include "formats/Open_Ephys_Settings.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <functional>
#include <vector>

namespace Pelgar::ORBE::recorder {

namespace {

constexpr std::uint64_t numbers_at_once = 65'536;

std::string head_of(const std::filesystem::path& file) {
    std::string head(npy_head_size, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return head;
}

void write_head(const std::filesystem::path& file, const std::string& head) {
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    if (!stream.write(head.data(), static_cast<std::streamsize>(head.size())).flush()) {
        throw file_error(file, "cannot write");
    }
}

bool is_whole(const std::filesystem::path& file, const std::string& type, std::uint64_t count,
              std::size_t number_bytes) {
    return size_of(file) == npy_head_size + count * number_bytes && head_of(file) == npy_head(type, count);
}

// Numbers that follow from nothing but their place.
template <typename Number>
void make_numbers(const std::filesystem::path& file, const std::string& type, std::uint64_t count,
                  const std::function<Number(std::uint64_t)>& number, Folder_Repair& repair) {
    if (is_whole(file, type, count, sizeof(Number))) {
        return;
    }
    std::filesystem::path temporary = file;
    temporary += ".partial";
    Npy_File made(temporary, type);
    for (std::uint64_t begin = 0; begin < count; begin += numbers_at_once) {
        made.append_many<Number>(static_cast<std::size_t>(std::min(numbers_at_once, count - begin)),
                                 [&](std::size_t i) { return number(begin + i); });
        made.flush();
    }
    made.close();
    std::filesystem::rename(temporary, file);
    repair.tell(file, "written anew for " + std::to_string(count) + " samples");
}

void repair_samples(const Open_Ephys_Stream& stream, std::uint64_t rows, Folder_Repair& repair) {
    const auto sample_number = [&](std::uint64_t place) {
        return static_cast<std::int64_t>(stream.first_sample + place);
    };
    make_numbers<std::int64_t>(stream.continuous_folder / "sample_numbers.npy", "<i8", rows, sample_number,
                               repair);
    make_numbers<double>(
        stream.continuous_folder / "timestamps.npy", "<f8", rows,
        [&](std::uint64_t place) { return static_cast<double>(sample_number(place)) / stream.sample_rate; },
        repair);
}

struct Event_File {
    const char* name;
    const char* type;
    std::size_t number_bytes;
};

constexpr std::array<Event_File, 4> event_files{{{"sample_numbers.npy", "<i8", 8},
                                                 {"timestamps.npy", "<f8", 8},
                                                 {"full_words.npy", "<u8", 8},
                                                 {"states.npy", "<i2", 2}}};

// Events up to the first one that lacks something, or whose sample never came.
std::uint64_t whole_events(const Open_Ephys_Stream& stream, std::uint64_t rows) {
    std::uint64_t count = ~std::uint64_t{0};
    for (const Event_File& file : event_files) {
        const std::uint64_t size = size_of(stream.events_folder / file.name);
        count = std::min(count, size < npy_head_size ? 0 : (size - npy_head_size) / file.number_bytes);
    }
    if (count == 0) {
        return 0;
    }
    const std::string numbers = read_file(stream.events_folder / event_files[0].name);
    for (std::uint64_t event = 0; event < count; ++event) {
        std::int64_t number = 0;
        std::memcpy(&number, numbers.data() + npy_head_size + event * sizeof(number), sizeof(number));
        if (number < 0 || static_cast<std::uint64_t>(number) >= stream.first_sample + rows) {
            return event;
        }
    }
    return count;
}

std::uint64_t repair_events(const Open_Ephys_Stream& stream, std::uint64_t rows, Folder_Repair& repair) {
    const std::uint64_t count = whole_events(stream, rows);
    for (const Event_File& file : event_files) {
        const std::filesystem::path path = stream.events_folder / file.name;
        if (count == 0) {
            repair.remove(path);
            continue;
        }
        repair.cut_to(path, npy_head_size + count * file.number_bytes);
        if (!is_whole(path, file.type, count, file.number_bytes)) {
            write_head(path, npy_head(file.type, count));
            repair.tell(path, "says " + std::to_string(count) + " events now");
        }
    }
    return count;
}

} // namespace

Stream_Lengths repair_open_ephys(const std::filesystem::path& folder,
                                 const Recording_Description& description, Folder_Repair& repair) {
    const auto streams = open_ephys_streams(folder, description);
    Stream_Lengths lengths;
    std::vector<Open_Ephys_Presence> presences;
    for (const Open_Ephys_Stream& stream : streams) {
        const std::uint64_t rows = repair.cut_to_whole(stream.continuous_folder / "continuous.dat",
                                                       stream.channel_count * sizeof(std::int16_t));
        lengths[stream.folder_name] = rows;
        if (rows > 0) {
            repair_samples(stream, rows, repair);
        }
        const std::uint64_t events = stream.has_events() ? repair_events(stream, rows, repair) : 0;
        presences.push_back({rows > 0, events > 0});
    }
    repair.make_content(open_ephys_structure_path(folder),
                        open_ephys_structure(open_ephys_entries(streams, description), presences));
    repair.make_content(open_ephys_settings_path(folder), open_ephys_settings(description));
    return lengths;
}

} // namespace Pelgar::ORBE::recorder
