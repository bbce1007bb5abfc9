// A host in the ABI of Windows' main compiler. Texts and numbers to the standard output.
#pragma once

namespace Pelgar::ORBE::host {

void print(const char* text);
void print(long long number);

} // namespace Pelgar::ORBE::host
