// Data references and paths: any text is cleaned, resolved and translated in a session with a few
// shots, and comes out as the forms of a reference say. Nothing here writes a file.
#include <string.h>
#include <strings.h>

#include <filesystem>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "support/Fuzzing.h"
#include "system/DSystem.h"

namespace {

bool HasZero(const std::string& text) { return text.find('\0') != text.npos; }

void CheckParts(const std::string& path) {
    DString folder;
    DString name;
    SplitPathElts(Text(path), folder, name);
    if (HasZero(path)) return;
    REQUIRE(Bytes(name).find('/') == std::string::npos);
    if (path.find('/') != path.npos) REQUIRE(Bytes(folder) + "/" + Bytes(name) == path);
    if (!folder.IsEmpty() && !name.IsEmpty()) REQUIRE(Bytes(AppendPathElts(folder, name)) == path);
    REQUIRE(IsFullQual(Text(path)) == path.starts_with('/'));
    REQUIRE(Bytes(TranslateFileName(Text(path))).find('\\') == std::string::npos);
}

// A path below the experiment's parent keeps its place through the stored form and back.
void CheckStoredForm(const std::string& rest) {
    const std::string path = Scratch("e/" + rest);
    const DString stored = Expt.RelativePath(Text(path));
    REQUIRE(Bytes(stored).starts_with("..\\"));
    if (rest.find('\\') == rest.npos && !HasZero(rest)) {
        REQUIRE(Bytes(Expt.FullPath(stored)) == path);
    }
    Expt.GetShotGroupNumber(Text(rest));
    Expt.GetShotGroupNumber(stored);
}

void CheckReference(const std::string& text) {
    const DString reference = Text(text);
    const DString clean = Expt.CleanDataFileName(reference);
    const size_t backslash = text.rfind('\\');
    const bool hasShot = backslash != text.npos && backslash > 0;
    if (!HasZero(text) && !(hasShot && (text[0] == '<' || text[0] == '>'))) {
        REQUIRE(Bytes(clean) == text);
    }
    const DString path = Expt.GetDataFileName(clean);
    Expt.GetDataFileName(reference);
    const bool plain = text.find_first_of("\\[") == text.npos && !HasZero(text) &&
                       !text.starts_with('.') && text.size() > 1 && text[1] != ':';
    if (plain) REQUIRE(Bytes(path) == Bytes(Expt.GetShotFolder()) + "/" + text);
    DString shot;
    const int group = Expt.GetShotGNumFromFileName(reference, shot);
    REQUIRE(group >= -1 && group < Expt.m_GroupPaths.Count());
    DStringArray names;
    names.Add("kept");
    Expt.GetDataFileNames(reference, names, false);
    REQUIRE(names.Count() >= 1);
}

void CheckNames(const std::string& text) {
    const bool first = Expt.IsValidName(Text(text), false);
    const bool second = Expt.IsValidName(Text(text), true);
    if (HasZero(text)) return;
    REQUIRE(first == (text.find_first_of("!\"#$*:;=?@\\{}~") == text.npos));
    REQUIRE(second == (text.find_first_of("!\"#$&*,/:;<>?{|}~") == text.npos));
}

void MakeExperiment() {
    for (const char* shot : {"e/Shots/Shot1", "e/Shots/ShotA009", "Data1/ShotA010", "Data1/Shot1"})
        std::filesystem::create_directories(Scratch(shot));
    WriteBytes(Scratch("e/Shots/Shot1/W.x.wvf"), "");
    WriteBytes(Scratch("e/Shots/Shot1/Scalars.ini"), "[Fields]\r\na=A010\r\nb=W");
    WriteBytes(Scratch("e/Shots/ShotA009/Scalars.ini"), "[Fields]\r\na=1");
    WriteBytes(Scratch("e/e.ini"), "[Groups]\r\n..\\Data*;;");
    Expt.SetExperimentFolder(Scratch("e").c_str());
}

}  // namespace

void StartTarget() { MakeExperiment(); }

void RunInput(Input input) {
    DStringArray translations;
    for (int count = input.Below(3); count > 0; --count)
        translations.Add(Text(input.Line()));
    TrIni.m_Hold = true;
    TrIni.SetFullSection("Translations", translations);
    REQUIRE(Expt.SetShot(input.Bool() ? "A009" : "1", 0));
    const DString offset = Expt.GetOffsetShotName(input.Int32());
    REQUIRE(!offset.IsEmpty());
    const std::string text = input.Line();
    const std::string other = input.Rest();
    for (const std::string& each : {text, other}) {
        CheckParts(each);
        CheckStoredForm(each);
        CheckReference(each);
        CheckNames(each);
        GetLocalFileName(GetUNCFileName(Text(each)));
        DString shot = Text(each);
        const int group = Expt.GuessPathFromShot(shot);
        REQUIRE(group >= -1 && group < Expt.m_GroupPaths.Count());
        FileDate(Text(each));
        GetFileLen(Text(each));
    }
    AppendPathElts(Text(text), Text(other), Text(text), Text(other));
    Expt.AppendExptPathElts(Text(text), Text(other));
}
