// A PostgreSQL server of a test's own, to be stopped in the midst of things and started again.
#pragma once

#ifndef _WIN32

#include "support/TestDatabases.h"

#include <cstdio>

namespace dax::test {

// Goes with its data at the end, also when the program that has it is killed. Throws std::runtime_error when the
// server does not do as it is told.
class OwnServer {
public:
    // Why there can be none; empty when there can.
    static std::string WhyNot();
    OwnServer();
    ~OwnServer();
    OwnServer(const OwnServer&) = delete;
    OwnServer& operator=(const OwnServer&) = delete;

    // The administrator's.
    const Text& ConnectionString() const { return connectionString; }
    void Stop() { Order("stop\n"); } // at once, as if the power failed
    void Start() { Order("start\n"); }

private:
    std::string ReadLine();
    void Order(const std::string& order);

    TempFolder folder;
    int child = 0, channel = -1;
    FILE* answers = nullptr;
    Text connectionString;
};

} // namespace dax::test

#endif
