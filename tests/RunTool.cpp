#include "tests/RunTool.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

extern char** environ;

namespace zavri::test {

namespace {

// A file without a name, so that neither side ever waits for the other.
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File makeFile(const std::string& content) {
  File file(std::tmpfile(), std::fclose);
  std::fwrite(content.data(), 1, content.size(), file.get());
  std::rewind(file.get());
  return file;
}

std::string readAll(std::FILE* file) {
  std::string text;
  std::rewind(file);
  char block[4096];
  std::size_t size = 0;
  while ((size = std::fread(block, 1, sizeof block, file)) > 0) text.append(block, size);
  return text;
}

}  // namespace

ToolResult runTool(const std::vector<std::string>& arguments, const std::string& input) {
  std::vector<std::string> words{KORVAT_TOOL};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);

  const File in = makeFile(input);
  const File out = makeFile("");
  const File errors = makeFile("");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fileno(in.get()), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(out.get()), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(errors.get()), STDERR_FILENO);

  ToolResult result;
  pid_t process = 0;
  if (posix_spawn(&process, KORVAT_TOOL, &actions, nullptr, pointers.data(), environ) == 0) {
    int status = 0;
    waitpid(process, &status, 0);
    if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
  }
  posix_spawn_file_actions_destroy(&actions);
  result.output = readAll(out.get());
  result.errors = readAll(errors.get());
  return result;
}

}  // namespace zavri::test
