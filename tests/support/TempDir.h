// A temporary directory for one test, with HOME pointing into it. It is removed at the end, unless
// the test failed: then it stays and its path is printed, so that the evidence can be looked at.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

class TempDir {
public:
    TempDir()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "qburn-test-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            std::abort();
        m_path = pattern;
        setenv("HOME", (m_path + "/home").c_str(), 1);
        std::filesystem::create_directory(m_path + "/home");
    }
    ~TempDir()
    {
        if (::testing::Test::HasFailure()) {
            printf("the files of this test are kept in %s\n", m_path.c_str());
            return;
        }
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    std::string operator/(std::string_view name) const { return m_path + "/" + std::string(name); }

    // Writes a file below the directory, with its parents, and answers its whole path.
    std::string write(std::string_view name, std::string_view bytes) const
    {
        std::string file = *this / name;
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
        return file;
    }

private:
    std::string m_path;
};
