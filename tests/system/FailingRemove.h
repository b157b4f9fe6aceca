/// Lets the removal of one file fail, also for a user who may do anything.
#pragma once

#include <string>

/// While it lives, `remove` of that path fails with that error. FileTestsTest.cpp puts the call in
/// front of the system's.
struct FailingRemove {
    FailingRemove(const std::string& path, int error) : m_Path(path), m_Error(error) {
        m_Current = this;
    }
    ~FailingRemove() { m_Current = nullptr; }
    FailingRemove(const FailingRemove&) = delete;
    FailingRemove& operator=(const FailingRemove&) = delete;

    std::string m_Path;
    int m_Error;
    static inline const FailingRemove* m_Current = nullptr;
};
