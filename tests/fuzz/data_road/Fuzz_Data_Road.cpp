// Fuzzing: the whole data road, from transfers of rows to the packets that a host reads, in the box's own way
// and in host mode, with everything that is printed, logged and counted, against a model that shares nothing
// with the library (../model). An input sets the road up and then says step by step what happens on it
// (Road_Input).
#include "Fuzz_Target.h"

#include "Printed_Output.h"
#include "Road_Comparison.h"
#include "Road_Input.h"

namespace {

// The calibration that the filters keep.
void prepare_once() {
    static const bool is_prepared = [] {
        const Pelgar::ORBE::test::Printed_Output silence;
        Pelgar::ORBE::test::Library_Road::prepare();
        return true;
    }();
    static_cast<void>(is_prepared);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Pelgar::ORBE::test;

    prepare_once();
    Road_Input input(data, size);
    Road_Comparison comparison(input.settings());
    while (const auto event = input.next()) {
        comparison.take(*event);
    }
    comparison.compare_the_rest();
    return 0;
}
