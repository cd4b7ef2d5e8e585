// The entry point of fuzzers that feed bytes. Any exception that leaves it is a finding.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
