/* A network namespace of the test's own, and the commands to change it. */
#ifndef UVEL_TESTS_SYSTEM_NAMESPACE_H
#define UVEL_TESTS_SYSTEM_NAMESPACE_H

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <net/if.h>
#include <sched.h>
#include <string>

/* Moves the process into a new network namespace with nothing but a loopback device. False without the right to. */
inline bool EnterNewNamespace() {
    return unshare(CLONE_NEWNET) == 0;
}

/* Runs a command of iproute2 ("link add ..."); 0 is success. */
inline int TryIp(const std::string &arguments) {
    return std::system(("ip " + arguments + " 2>/dev/null").c_str());
}

inline void Ip(const std::string &arguments) {
    EXPECT_EQ(0, std::system(("ip " + arguments).c_str())) << arguments;
}

inline void Bridge(const std::string &arguments) {
    EXPECT_EQ(0, std::system(("bridge " + arguments).c_str())) << arguments;
}

/* Runs many commands at once, one a line. */
inline void IpBatch(const std::string &lines) {
    FILE *pipe = popen("ip -batch -", "w");
    ASSERT_NE(nullptr, pipe);
    std::fwrite(lines.data(), 1, lines.size(), pipe);
    EXPECT_EQ(0, pclose(pipe));
}

/* Whether this kernel makes devices of a kind. */
inline bool KernelHas(const std::string &kind, const std::string &more = "") {
    const bool made = TryIp("link add probe0 type " + kind + " " + more) == 0;
    if (made)
        Ip("link del probe0");
    return made;
}

/* A vlan device needs another one below it. */
inline bool KernelHasVlans() {
    Ip("link add probe1 type veth peer name probe2");
    const bool made = TryIp("link add link probe1 name probe0 type vlan id 5") == 0;
    Ip("link del probe1");
    return made;
}

/* Whether a test has to be skipped; in the guest none may be. */
inline bool Lacks(bool has) {
    EXPECT_TRUE(has || std::getenv("UVEL_GUEST") == nullptr) << "the guest's kernel has everything";
    return !has;
}

inline uint32_t IndexOf(const std::string &name) {
    return if_nametoindex(name.c_str());
}

#endif
