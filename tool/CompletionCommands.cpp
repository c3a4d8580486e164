#include "tool/CompletionCommands.h"

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tool/Completion.h"

namespace zavri::korvat::tool {

namespace {

// Each script asks the program on the line, so that any build of it completes what it has itself.

const char* const kBashScript =
    R"(# Completes the command line of korvat in bash. Printed by "korvat completion bash".

_korvat() {
  local i word= typed= offer program=$1 words=() offers=()
  [[ $program != '~/'* ]] || program=$HOME${program#\~}
  for ((i = 1; i <= COMP_CWORD; ++i)); do
    typed=${COMP_WORDS[i]}
    word=${typed//[\\\'\"]/}
    [[ $word == = ]] || words+=("$word") # "--option=value" comes as three words
  done
  [[ $word != = ]] || word= words+=("")

  COMPREPLY=()
  mapfile -t offers < <("$program" complete "${words[@]}" 2>/dev/null)
  case ${offers[0]-} in
    files) compopt -o default 2>/dev/null ;;
    folders) compopt -o dirnames 2>/dev/null ;;
    words)
      for offer in "${offers[@]:1}"; do
        offer=${offer%%$'\t'*}
        [[ $offer == "$word"* ]] || continue
        [[ $typed == [\'\"]* ]] || printf -v offer %q "$offer"
        COMPREPLY+=("$offer")
      done
      ;;
  esac
}

complete -F _korvat korvat
)";

const char* const kZshScript = R"(#compdef korvat
# Completes the command line of korvat in zsh. Printed by "korvat completion zsh".

_korvat() {
  local program=${${(Q)words[1]}/#\~\//$HOME/}
  local -a offers=("${(@f)$($program complete "${(@Q)words[2,CURRENT]}" 2>/dev/null)}")
  compset -P '--*='
  case $offers[1] in
    (files) _files ;;
    (folders) _files -/ ;;
    (words)
      offers=("${(@)offers[2,-1]/$'\t'/:}")
      _describe -V korvat offers
      ;;
  esac
}

if [[ $funcstack[1] == _korvat ]]; then
  _korvat "$@"
else
  compdef _korvat korvat
fi
)";

const char* const kFishScript =
    R"(# Completes the command line of korvat in fish. Printed by "korvat completion fish".

function __korvat_offers
    set -l words (commandline -opc)
    set -l word (commandline -ct | string replace -ra '[\\\\\'"]' '')
    set -l program (string replace -r '^~/' "$HOME/" -- $words[1])
    set -l offers ($program complete $words[2..] "$word" 2>/dev/null)
    set -l option (string match -r -- '^--[^=]*=' "$word")
    switch "$offers[1]"
        case files
            printf '%s\n' "$option"(__fish_complete_path (string replace -- "$option" '' "$word"))
        case folders
            printf '%s\n' "$option"(__fish_complete_directories (string replace -- "$option" '' "$word"))
        case words
            printf '%s\n' "$option"$offers[2..]
    end
end

complete -c korvat -f -k -a '(__korvat_offers)'
)";

const std::map<std::string, const char*> kScripts{
    {"bash", kBashScript}, {"zsh", kZshScript}, {"fish", kFishScript}};

const char* kindName(Offers::Kind kind) {
  switch (kind) {
    case Offers::Kind::Words:
      return "words";
    case Offers::Kind::Files:
      return "files";
    case Offers::Kind::Folders:
      return "folders";
  }
  return "";
}

}  // namespace

void runComplete(const CLI::App& app, const std::vector<std::string>& words) {
  const Offers offers = findOffers(app, words);
  std::string lines = std::string(kindName(offers.kind)) + "\n";
  for (const Offers::Word& word : offers.words) {
    lines += word.text + (word.description.empty() ? "" : "\t" + word.description) + "\n";
  }
  std::fputs(lines.c_str(), stdout);
}

void addCompletionCommand(CLI::App& app) {
  CLI::App* completion =
      app.add_subcommand("completion", "Print what makes a shell complete the command line");
  const auto shell = std::make_shared<std::string>();
  completion->add_option("SHELL", *shell, "bash, zsh or fish")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  completion->callback([shell] { std::fputs(kScripts.at(*shell), stdout); });
}

}  // namespace zavri::korvat::tool
