#include "self_test/Fast_Fourier.h"

#include "common/Console.h"
#include "common/Host_Path.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <locale>
#include <numbers>
#include <vector>

namespace Pelgar::ORBE {

namespace {

using Sample = std::complex<double>;

// Even-indexed samples first. `odd` has room for half of them.
void split(Sample* data, std::size_t half, Sample* odd) {
    for (std::size_t i = 0; i < half; ++i) {
        odd[i] = data[2 * i + 1];
        data[i] = data[2 * i];
    }
    std::copy_n(odd, half, data + half);
}

void transform(Sample* data, std::size_t n, Sample* scratch) {
    if (n <= 1) {
        return;
    }
    const std::size_t half = n / 2;
    split(data, half, scratch);
    transform(data, half, scratch);
    transform(data + half, half, scratch);
    const Sample step = std::polar(1.0, 2.0 * std::numbers::pi / static_cast<double>(n));
    Sample turn = 1.0;
    for (std::size_t k = 0; k < half; ++k) {
        const Sample even = data[k];
        const Sample odd = turn * data[k + half];
        data[k] = even + odd;
        data[k + half] = even - odd;
        turn *= step;
    }
}

double amplitude(Sample bin, unsigned n) {
    return 2.0 * std::abs(bin) / n;
}

} // namespace

void fast_fourier(std::complex<double>* data, double n) {
    if (!(n > 1.0)) {
        return;
    }
    const auto count = static_cast<std::size_t>(n);
    std::vector<Sample> scratch(count / 2);
    transform(data, count, scratch.data());
}

unsigned int peek_search(const std::complex<double>* data, unsigned int n, double* magnitude) {
    const unsigned end = n / 2;
    unsigned peak = 0;
    double highest = 0.0;
    if (end >= 2) {
        peak = 1;
        highest = amplitude(data[1], n);
        for (unsigned bin = 2; bin < end; ++bin) {
            const double current = amplitude(data[bin], n);
            if (current > highest) {
                peak = bin;
                highest = current;
            }
        }
    }
    if (magnitude != nullptr) {
        *magnitude = highest;
    }
    return peak;
}

void print_magnitudes(std::ostream& stream, const std::complex<double>* data, unsigned int n) {
    for (unsigned bin = 0; bin < n / 2; ++bin) {
        stream << bin << ' ' << amplitude(data[bin], n) << '\n';
    }
}

bool load_sample_data_from_file(std::complex<double>* data, unsigned int n, const char* path) {
    if (n == 0) {
        return true;
    }
    std::ifstream stream;
    if (path != nullptr && !opens_as_directory(path)) {
        stream.open(path);
    }
    if (!stream.is_open()) {
        console::err("File open error\n");
        return false;
    }
    // Numbers are plain digits, whatever locale the host has set.
    stream.imbue(std::locale::classic());
    for (unsigned i = 0; i < n; ++i) {
        double value = 0.0;
        if (!(stream >> value)) {
            console::err("File parse error\n");
            return false;
        }
        data[i] = value;
    }
    return true;
}

} // namespace Pelgar::ORBE
