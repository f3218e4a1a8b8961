#pragma once

#include <server/engine/ops/request.h>

namespace zeral::server {

struct ServerState;

// Fingerprint templates of users: how many each has, which fingers, enrolling and removing.
// One template per user and finger; an enrolment replaces the one before.
class BiometricOps
{

public:
    explicit BiometricOps(ServerState &state);

    Reply fingersExist(Request &request);
    Reply userFingers(Request &request);
    Reply enrolFinger(Request &request);
    Reply removeFinger(Request &request);

    static constexpr int FingerCount = 10;             // 0..4 right hand, 5..9 left hand
    static constexpr int MaxTemplateBytes = 64 * 1024; // far above any reader's template

private:
    // Reading the fingers of others needs "RL_USER_SHOW".
    Reply checkMayRead(const Request &request, const QList<quint32> &uids) const;
    // The user must exist, and the operator must hold the biometric role and be allowed to
    // change that user.
    Reply checkMayEdit(const Request &request, TYPE_ID uid);

    ServerState &m_state;
};

} // namespace zeral::server
