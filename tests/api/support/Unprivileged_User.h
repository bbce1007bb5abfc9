// Test support, Linux: while it lives the process is an ordinary user's that has a resource limit of 0, so
// that the system refuses what it grants the superuser. All threads of the process.
#pragma once

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

namespace Pelgar::ORBE::test {

class Unprivileged_User {
public:
    // `resource` as setrlimit takes it, for example RLIMIT_NPROC: no further thread can be made.
    explicit Unprivileged_User(__rlimit_resource resource)
        : m_resource(resource), m_superuser(geteuid() == 0) {
        EXPECT_EQ(getrlimit(resource, &m_limit), 0);
        const rlimit none{0, m_limit.rlim_max};
        EXPECT_EQ(setrlimit(resource, &none), 0);
        // The way back stays open.
        if (m_superuser) {
            EXPECT_EQ(setresuid(ordinary_user, ordinary_user, 0), 0);
        }
    }

    ~Unprivileged_User() {
        if (m_superuser) {
            EXPECT_EQ(setresuid(0, 0, 0), 0);
        }
        EXPECT_EQ(setrlimit(m_resource, &m_limit), 0);
    }

    Unprivileged_User(const Unprivileged_User&) = delete;
    Unprivileged_User& operator=(const Unprivileged_User&) = delete;

private:
    static constexpr uid_t ordinary_user = 65534;

    __rlimit_resource m_resource;
    bool m_superuser;
    rlimit m_limit{};
};

} // namespace Pelgar::ORBE::test
