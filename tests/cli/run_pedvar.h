/// Running the program as a person does.
#pragma once

#include "support/temporary_folder.h"

#include <sys/types.h>
#include <filesystem>
#include <functional>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// What became of one run.
struct Outcome {
    int exitCode = 0;
    std::string output;  // standard output
    std::string errors;  // standard error
};

/// Runs the program in `folder`, in Berlin, with English habits and a UTF-8 terminal's character set.
/// `environment` has further variables ("NAME=value"), which win.
Outcome runPedvar(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                  const std::vector<std::string>& environment = {});

/// The same, while it runs.
class RunningPedvar {
public:
    RunningPedvar(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                  const std::vector<std::string>& environment = {});
    /// Kills it if need be.
    ~RunningPedvar();
    RunningPedvar(const RunningPedvar&) = delete;
    RunningPedvar& operator=(const RunningPedvar&) = delete;

    pid_t process() const { return process_; }
    /// Whether standard output or standard error comes to hold `text`, or a match, before the program ends.
    bool says(std::string_view text);
    bool says(const std::regex& pattern);
    void signal(int number) const;
    /// Waits for its end.
    Outcome finish();

private:
    bool hasEnded();
    /// Whether `isSought` comes true of standard output or standard error before the program ends.
    bool comesToSay(const std::function<bool(const std::string&)>& isSought);

    TemporaryFolder scratch_;
    pid_t process_ = 0;
    std::optional<int> status_;  // once it has ended
};

/// Compares with a file of tests/cli/golden. With PEDVAR_REFRESH_GOLDEN in the environment the file is written
/// anew instead; look at the difference before you keep it.
void checkGolden(const std::string& name, const std::string& text);

}  // namespace pedvar
