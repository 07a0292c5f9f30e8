#pragma once

#include <memory>

#include "LinkSeams.h"
#include "RecordingBinder.h"

namespace aidl::vendor::tavix::tps::test {

using ::tps::test::RecordingBinder;

// A proxy of Interface over a recording binder of the interface's descriptor, standing in for the
// other side. A test changes the answer between calls (never while another thread calls).
template <typename Interface>
class ScriptedProxy {
public:
    // Writes `reply` (by default an OK header) and ends the transaction with `transport`.
    void answerWith(const Wire& reply, binder_status_t transport = STATUS_OK) {
        mAnswer = [reply, transport](transaction_code_t, const AParcel*, AParcel* out) {
            AParcel_unmarshal(out, reply.bytes().data(), reply.bytes().size());
            return transport;
        };
    }
    void failWith(binder_status_t transport) { answerWith(Wire(), transport); }

    RecordingBinder::Handler mAnswer = [](transaction_code_t, const AParcel*, AParcel* reply) {
        return AParcel_writeInt32(reply, 0);
    };
    RecordingBinder mRemote{Interface::descriptor,
                            [this](transaction_code_t code, const AParcel* in, AParcel* out) {
                                return mAnswer(code, in, out);
                            }};
    std::shared_ptr<Interface> mProxy = Interface::fromBinder(mRemote.binder());
};

}  // namespace aidl::vendor::tavix::tps::test
