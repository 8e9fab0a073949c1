// A folder of its own for a test, gone with the object.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

class TempFolder {
public:
    TempFolder() {
        std::string name =
            (std::filesystem::temp_directory_path() / "calvorin-test-XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ~TempFolder() {
        std::error_code none;
        std::filesystem::remove_all(path_, none);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

inline void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string readFile(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}
