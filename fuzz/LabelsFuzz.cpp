// Names and captions with references to fields: every text is filled in or refused, and the
// formats in it print within bounds.
#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "support/Fuzzing.h"

void StartTarget() {
    Expt.SetExperimentFolder(Scratch("Discharge").c_str());
    DString shot("1");
    REQUIRE(Expt.CreateShot(shot, "", false) >= 0);
    Expt.SetShotData("a", "2");
    Expt.SetShotData("b", "text");
    Expt.SetShotData("c", "![a]");
    Expt.SetShotData("d", "3.14159265358979");
}

void RunInput(Input input) {
    const bool markedOnly = input.Bool();
    const std::string text = input.Rest();
    const DString expanded = Expt.GetExpandedString(text.c_str(), markedOnly);
    if (text.find('[') == std::string::npos) REQUIRE(text.c_str() == std::string(expanded));
    const DString label = Expt.GetExpandedLabel(text.c_str());
    if (text.find("![") == std::string::npos) REQUIRE(text.c_str() == std::string(label));
}
