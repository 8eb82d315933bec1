#pragma once
// A test that works on its own copy of one configuration file: the file's override
// variable points into a fresh temporary tree for the test's lifetime.

#include "fs/file_io.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <cstdlib>

class ConfigFileTest : public ::testing::Test {
protected:
    ConfigFileTest(const char* variable, const std::string& rel)
        : m_variable(variable), m_path(m_tree.path(rel))
    {
        ::setenv(m_variable, m_path.c_str(), 1);
    }
    ~ConfigFileTest() override { ::unsetenv(m_variable); }

    std::string text() const { return fileReadAll(m_path).value_or("<missing>"); }

    TempTree m_tree;
    const char* m_variable;
    std::string m_path;
    const std::string m_home = testHome();
};
