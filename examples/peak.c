/* A first host of Tarsel, in plain C.
 *
 *   peak EXPERIMENT_FOLDER TRACE.csv
 *
 * opens the experiment, makes shot 1 in it, stores the measured trace and a few fields there, and
 * asks the library for numbers and a caption. The experiment is made if there is none; a second run
 * takes the shot over and stores everything anew. Give the full path of the experiment folder: the
 * library makes folders by full paths alone. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tarsel/core/CFunctions.h>

/* A measured trace: x and y of each point in turn, as SetWaveformXYC takes them. */
typedef struct {
    float* xy;
    int points;
    int room;
} Trace;

typedef char Text[256];

/* ---- What to do when something fails */

static void Fail(const char* what, const char* about) {
    fprintf(stderr, "peak: %s %s\n", what, about);
    exit(1);
}

/* The library's numbers for "no value" lie outside these bounds; so does a NaN. */
static float Valid(float value, const char* expression) {
    if (!(value > -9.9e34f && value < 9.9e34f)) Fail("no value for", expression);
    return value;
}

/* ---- Texts: the library writes no terminator and cuts what doesn't fit, so we keep one byte */

enum { TextRoom = sizeof(Text) - 1 };

static void Terminate(Text text, int length) {
    if (length == TextRoom) Fail("too long a text for", "this host");
    text[length] = '\0';
}

static void GetSessionText(int selector, Text text) {
    int length = TextRoom;
    GetStringC(selector, &length, text);
    Terminate(text, length);
}

static void GetField(const char* name, Text text) {
    int length = TextRoom;
    GetStringDataC(name, &length, text);
    Terminate(text, length);
}

/* With a room of 60 or more the library fills in the expression between the braces of a template.
 */
static void FillTemplate(const char* template, Text text) {
    int length = TextRoom;
    GetScalarDataSafeC(template, &length, text);
    Terminate(text, length);
    if (strncmp(text, "Error", 5) == 0) Fail("no text for", template);
}

/* ---- The steps of the road */

static void OpenExperiment(const char* folder) {
    Text name, path;
    if (folder[0] != '/') Fail("not a full path:", folder);
    /* The folder in which a host is installed; this one keeps nothing there. */
    InitializeTarselC(".");
    SetExperimentC(folder);
    GetSessionText(6, name);
    GetSessionText(3, path);
    if (!*name) Fail("can't open the experiment in", folder);
    printf("experiment  %s in %s\n", name, path);
}

static void MakeShot(void) {
    Text name, folder;
    /* The "*" takes the shot over if it exists already. */
    if (!CreateShotC("*1")) Fail("can't make shot", "1");
    GetSessionText(1, name);
    GetSessionText(2, folder);
    printf("shot        %s in %s\n", name, folder);
}

static void AddPoint(Trace* trace, float x, float y) {
    if (trace->points == trace->room) {
        trace->room = trace->room ? 2 * trace->room : 1024;
        trace->xy = realloc(trace->xy, 2 * sizeof(float) * (size_t)trace->room);
        if (!trace->xy) Fail("no memory for", "the trace");
    }
    trace->xy[2 * trace->points] = x;
    trace->xy[2 * trace->points + 1] = y;
    ++trace->points;
}

/* Lines of "x,y"; lines that begin with "#" are comments. */
static Trace ReadTrace(const char* file) {
    Trace trace = {NULL, 0, 0};
    char line[256];
    FILE* stream = fopen(file, "r");
    if (!stream) Fail("can't read", file);
    while (fgets(line, sizeof line, stream)) {
        float x, y;
        if (line[0] == '#') continue;
        if (sscanf(line, "%f,%f", &x, &y) != 2) Fail("not a point:", line);
        AddPoint(&trace, x, y);
    }
    if (ferror(stream)) Fail("can't read", file);
    fclose(stream);
    return trace;
}

static void StoreTrace(const char* name, const char* file) {
    int points;
    float start, step;
    Trace trace = ReadTrace(file);
    SetWaveformXYC(name, trace.points, trace.xy);
    free(trace.xy);
    /* The call has no result; the file that it wrote tells. */
    GetWaveformInfoC(name, &points, &start, &step);
    if (points != trace.points || points == 0) Fail("can't store the trace of", file);
    printf("trace       %s of %s: %d points from %g s on, one every %g s\n", name, file, points,
           (double)start, (double)step);
}

static void StoreField(const char* name, const char* value) {
    Text stored;
    SetStringDataC(name, value);
    GetField(name, stored);
    if (strcmp(stored, value) != 0) Fail("can't store the field", name);
    printf("field       %s = %s\n", name, stored);
}

static void PrintNumber(const char* expression, const char* unit, const char* meaning) {
    const float value = Valid(GetScalarDataC(expression), expression);
    printf("  %-26s %.8g%s\n      %s\n", expression, (double)value, unit, meaning);
}

static void PrintTemplate(const char* template, const char* meaning) {
    Text text;
    FillTemplate(template, text);
    printf("  %-26s %s\n      %s\n", template, text, meaning);
}

int main(int argc, char** argv) {
    if (argc != 3) Fail("usage:", "peak EXPERIMENT_FOLDER TRACE.csv");
    OpenExperiment(argv[1]);
    MakeShot();
    StoreTrace("I", argv[2]);
    StoreField("Trace", "I");
    StoreField("Valid", "True");
    StoreField("Comment", "capacitor discharge into a coil");

    printf("\nasked for, and answered:\n");
    PrintNumber("I\\mx*2", " A", "the peak of trace I, doubled");
    PrintNumber("I\\19", " s", "its rise time from 10 % to 90 % of the peak");
    PrintNumber("bol(Valid)", "", "the field Valid: 1 for True");
    PrintTemplate("peak {![Trace]\\mx*2} A",
                  "a caption; the field Trace says which trace is meant");
    return 0;
}
