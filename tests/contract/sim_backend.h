// The simulated desktop under the contract: by itself, and under what stands for macOS.
#pragma once

#include <memory>

#include "tests/contract/contract_backend.h"

namespace tarqo::contract {

[[nodiscard]] std::unique_ptr<ContractBackend> makeSimBackend();

}  // namespace tarqo::contract
