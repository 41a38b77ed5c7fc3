// The lease query and profiling readers agree with a model that walks step by step, in every kind of packet storage.

#include "OptionsInput.h"

using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    const OptionsInput input(data, size);
    const Model::LeaseReply lease = Model::leaseQuery(input.bytes, input.offset);
    const Model::Profile profile = Model::profile(input.bytes, input.offset);
    for (const PktPtr& pkt : packets(input.bytes)) {
        expect(Model::readLeaseQuery(pkt, input.offset) == lease);
        expect(Model::readProfile(pkt, input.offset) == profile);
        expect(bytesOf(*pkt) == input.bytes);
    }
    return 0;
}
