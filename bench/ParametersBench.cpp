// Parameters that the header of a stored object answers, of a big object beside a small one: how
// many samples there are must not matter.
#include <string>

#include "core/CoreGlobal.h"
#include "data/Matrix.h"
#include "data/ParticleGroup.h"
#include "data/Waveform.h"
#include "experiment/Experiment.h"
#include "support/Bench.h"

namespace {

constexpr int Few = 1000;
constexpr int Many = 10000000;
const char ManyAndFew[] = "10,000,000 : 1,000";

void WriteTrace(const char* name, int samples) {
    Waveform trace(samples);
    trace.Scale();
    trace.Write(Expt.GetDataFileName(name));
}

// Layers of 100 by 10.
void WriteMatrix(const char* name, int values) {
    Matrix matrix(100, 10, values / 1000);
    matrix.Scale();
    matrix.Write(Expt.GetDataFileName(name));
}

void WriteImage(const char* name, int rows, int columns) {
    Matrix image(rows, columns, 1);
    image.Scale();
    image.Write(Expt.GetDataFileName(name));
}

void WriteGroup(const char* name, int values) {
    ParticleGroup group(values / ParticleGroup::Columns);
    group.Write(Expt.GetDataFileName(name));
}

// A shot with an object of each kind and size, made when the first row asks for it.
void SelectShot() {
    Expt.SetExperimentFolder(Scratch("Parameters").c_str());
    static const bool made = [] {
        DString request("1");
        Expt.CreateShot(request, "", false);
        WriteTrace("few", Few);
        WriteTrace("many", Many);
        WriteMatrix("fewM", Few);
        WriteMatrix("manyM", Many);
        WriteImage("fewI", 100, 10);
        WriteImage("manyI", 5000, 2000);
        WriteGroup("fewP", Few);
        WriteGroup("manyP", Many);
        return true;
    }();
    if (made) Expt.SetShot("1", 0);
}

void Evaluate(benchmark::State& state, const char* expression) {
    SelectShot();
    const DString text(expression);
    if (!IsVF(Expt.ParseInput(text, nullptr))) state.SkipWithError("no value");
    for (auto _ : state)
        benchmark::DoNotOptimize(Expt.GetScalarData(text, nullptr));
}

void ManyMax(benchmark::State& state) { Evaluate(state, "many\\mx"); }
void FewMax(benchmark::State& state) { Evaluate(state, "few\\mx"); }
void ManyStart(benchmark::State& state) { Evaluate(state, "many\\st"); }
void FewStart(benchmark::State& state) { Evaluate(state, "few\\st"); }
void ManyEnd(benchmark::State& state) { Evaluate(state, "many\\ft"); }
void FewEnd(benchmark::State& state) { Evaluate(state, "few\\ft"); }
void ManyNumber(benchmark::State& state) { Evaluate(state, "many\\t1"); }
void FewNumber(benchmark::State& state) { Evaluate(state, "few\\t1"); }
void ManyLayers(benchmark::State& state) { Evaluate(state, "manyM\\lc"); }
void FewLayers(benchmark::State& state) { Evaluate(state, "fewM\\lc"); }
void ManyImage(benchmark::State& state) { Evaluate(state, "manyI\\mx"); }
void FewImage(benchmark::State& state) { Evaluate(state, "fewI\\mx"); }
void ManyParticles(benchmark::State& state) { Evaluate(state, "manyP\\np"); }
void FewParticles(benchmark::State& state) { Evaluate(state, "fewP\\np"); }

const Row mMax{"mx of a trace", ManyAndFew, 1.1, ManyMax, FewMax};
const Row mStart{"st of a trace", ManyAndFew, 1.1, ManyStart, FewStart};
const Row mEnd{"ft of a trace", ManyAndFew, 1.1, ManyEnd, FewEnd};
const Row mNumber{"t1 of a trace", ManyAndFew, 1.1, ManyNumber, FewNumber};
const Row mLayers{"lc of a matrix of 10,000 layers : 1", ManyAndFew, 1.1, ManyLayers, FewLayers};
const Row mImage{"mx of an image of 5000 by 2000 : 100 by 10", ManyAndFew, 1.1, ManyImage,
                 FewImage};
const Row mParticles{"np of particles", ManyAndFew, 1.1, ManyParticles, FewParticles};

}  // namespace
