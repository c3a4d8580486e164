#include "tool/Examples.h"

#include <string>
#include <string_view>

namespace zavri::korvat::tool {

namespace {

struct Example {
  std::string_view command;
  std::string_view line;  // of a shell; mycatalogue is a catalogue in the current folder
};

constexpr Example kExamples[] = {
    {"decode", "korvat decode SNVT_switch C801"},
    {"decode", R"(echo '{"type":"SNVT_temp_p","raw":"092E"}' | korvat decode --stream)"},
    {"decode",
     "printf 'time,bytes\\n12:00,C801\\n' | korvat decode --stream --type SNVT_switch --csv-in "
     "--raw-column bytes --csv"},
    {"encode", R"(korvat encode SNVT_switch '{"value":50,"state":1}')"},
    {"encode", "echo 21.5 | korvat encode --stream --type SNVT_temp_p"},
    {"explain", "korvat explain SNVT_switch C801"},
    {"explain", "korvat explain SNVT_hvac_status 01271000C8FF3800007FFF00 --color always"},
    {"get", "korvat get SNVT_switch C801 state"},
    {"get",
     "korvat get SNVT_alarm 010203040506000A0A010012DEADBEEF07E40C1F173B3B03E7CAFEBABE "
     "'location[2]'"},
    {"set", "korvat set SNVT_switch C801 value 12.5"},
    {"set", "korvat set SNVT_hvac_status 01271000C8FF3800007FFF00 mode HVAC_COOL"},
    {"swap", "korvat swap SNVT_temp_p 092E --from big"},
    {"swap", "korvat swap SNVT_elapsed_tm E703000000000A --from little"},
    {"guess", "korvat guess C801"},
    {"guess", "korvat --order little guess 2E09"},
    {"search", "korvat search heating setpoint"},
    {"search", "korvat search celsius --json"},
    {"describe", "korvat describe SNVT_switch"},
    {"describe", "korvat describe SNVT_obj_status --svg obj_status.svg"},
    {"schema", "korvat schema SNVT_switch"},
    {"schema", "korvat schema SNVT_switch SNVT_temp_p"},
    {"profile", "korvat profile SFPTnodeObject"},
    {"profile", "korvat profile 8010"},
    {"list", "korvat list nv temp"},
    {"list", "korvat list --kind cp --unit 'degrees*' --size 1-2"},
    {"check", "korvat check"},
    {"check", "korvat check mycatalogue --json"},
    {"diff", "korvat diff mycatalogue mycatalogue"},
    {"diff", "korvat diff mycatalogue mycatalogue --json"},
    {"completion", "korvat completion bash"},
    {"completion", "korvat completion fish > korvat.fish"},
};

}  // namespace

void addExamples(CLI::App& app) {
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    std::string text;
    for (const Example& example : kExamples) {
      if (example.command == command->get_name()) text += "\n  " + std::string(example.line);
    }
    command->footer("Examples:" + text);
  }
}

}  // namespace zavri::korvat::tool
