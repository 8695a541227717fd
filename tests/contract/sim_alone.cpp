// The contract of the simulated desktop itself.

#include "tests/contract/sim_backend.h"

namespace tarqo::contract {

std::unique_ptr<ContractBackend> makeContractBackend() { return makeSimBackend(); }

}  // namespace tarqo::contract
