// A host of Tarsel in C++, against the class interface.
//
//   stack EXPERIMENT_FOLDER
//
// makes shot 1 of the experiment, stores a stack of images and a group of particles in it, and asks
// for their parameters: by expression, and through the objects that the session hands out. Give the
// full path of the experiment folder.
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include <tarsel/Tarsel.h>

namespace {

void Fail(const DString& what) {
    std::fprintf(stderr, "stack: %s\n", static_cast<const char*>(what));
    std::exit(1);
}

void OpenShot(const char* folder) {
    if (!IsFullQual(folder)) Fail(DString("not a full path: ") + folder);
    CoreInit(GetCurrentDirectoryD());
    Expt.SetExperimentFolder(folder);
    DString request("*1");  // the "*" takes over a shot that is there already
    if (Expt.CreateShot(request, "a light spot that fades", false) < 0) Fail("can't make shot 1");
    std::printf("shot %s in %s\n", static_cast<const char*>(Expt.GetShotName()),
                static_cast<const char*>(Expt.GetShotFolder()));
}

// Ten frames, 2 ms apart, of 64 by 48 pixels, 0.1 mm apart: a Gaussian spot that fades.
void StoreImages(const char* name) {
    constexpr int Rows = 64;
    constexpr int Columns = 48;
    constexpr int Frames = 10;
    constexpr float Pixel = 0.1f;
    Matrix images(Rows, Columns, Frames);
    images.SetStep(1, Pixel, -3.15f);
    images.SetStep(2, Pixel, -2.35f);
    images.SetStep(3, 2e-3f, 0.0f);
    int i = 0;
    for (int frame = 0; frame < Frames; ++frame) {
        const float brightness = 100.0f * std::exp(-images.GetCoord(3, frame) / 5e-3f);
        for (int column = 0; column < Columns; ++column) {
            for (int row = 0; row < Rows; ++row) {
                const float y = images.GetCoord(1, row);
                const float x = images.GetCoord(2, column);
                images[i++] = brightness * std::exp(-(x * x + y * y));
            }
        }
    }
    images.m_Note = "brightness in counts, places in mm, time in s";
    images.Scale();
    if (!images.Write(Expt.GetDataFileName(name))) Fail("can't write the images");
}

// A ring of particles that all move outwards at 3 m/s.
void StoreParticles(const char* name) {
    constexpr int Particles = 1000;
    ParticleGroup ring(Particles);
    for (int p = 0; p < Particles; ++p) {
        const float angle = 2.0f * pi * static_cast<float>(p) / Particles;
        float* particle = ring.Data() + ParticleGroup::Columns * p;
        particle[0] = 0.02f * std::cos(angle);
        particle[1] = 0.02f * std::sin(angle);
        particle[3] = 3.0f * std::cos(angle);
        particle[4] = 3.0f * std::sin(angle);
    }
    ring.Scale();
    if (!ring.Write(Expt.GetDataFileName(name))) Fail("can't write the particles");
}

void Ask(const char* expression, const char* unit, const char* meaning) {
    const float value = Expt.GetScalarData(expression, nullptr);
    if (!IsVF(value)) Fail(DString("no value for ") + expression);
    std::printf("  %-14s %10.4g %-7s %s\n", expression, static_cast<double>(value), unit, meaning);
}

// The session owns the objects that it hands out, until they are given back.
void AskObjects(const DString& images, const DString& particles) {
    void* object = Expt.GetDataPtr(images, DataMatrix);
    if (!object) Fail("can't read the images");
    const Matrix& stack = *static_cast<Matrix*>(object);
    std::printf("  the spot is at row %d of %d; its last frame is at %g s\n",
                stack.PointAtCoord(1, 0.0f) + 1, stack.GetSize(1),
                static_cast<double>(stack.GetCoord(3, stack.GetSize(3) - 1)));
    Expt.ReleaseDataPtr("", DataMatrix, object);

    object = Expt.GetDataPtr(particles, DataPGroup);
    if (!object) Fail("can't read the particles");
    ParticleGroup& ring = *static_cast<ParticleGroup*>(object);
    ring.SetGeometry(1);
    std::printf("  the first particle is %g m out and moves outwards at %g m/s\n",
                static_cast<double>(ring[0]), static_cast<double>(ring[3]));
    Expt.ReleaseDataPtr("", DataPGroup, object);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) Fail("usage: stack EXPERIMENT_FOLDER");
    OpenShot(argv[1]);
    StoreImages("Spot");
    StoreParticles("Ring");
    std::printf("\nby expression:\n");
    Ask("Spot\\mx", "counts", "the brightest pixel");
    Ask("Spot\\lc", "", "frames in the file");
    Ask("Spot\\l1*1000", "ms", "from one frame to the next");
    Ask("Spot\\rc*Spot\\cc", "", "pixels of a frame");
    Ask("Ring\\np", "", "particles");
    std::printf("\nthrough objects:\n");
    AskObjects("Spot", "Ring");
    return 0;
}
