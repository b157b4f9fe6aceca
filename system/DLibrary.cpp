// The loader of plug-in modules, and the connection of a module to its host.
#include "system/DLibrary.h"

#include <dlfcn.h>

#include "core/CoreGlobal.h"
#include "system/DLLConnect.h"
#include "system/DSystem.h"
#include "types/StartUp.h"

TARSEL_START_UP(TARSEL_START_DLIBRARY) DLibrary DLib;

namespace {

int LoaderFlags(int options) {
    return (options & LoadLazily ? RTLD_LAZY : RTLD_NOW) |
           (options & LoadGlobally ? RTLD_GLOBAL : 0);
}

DString ModuleFile(const DString& name) { return "lib" + name + ".so"; }

DString SymbolName(const char* symbol, int options) {
    DString name(symbol);
    return options & LoadFortranName ? name.ToLower() + "_" : name;
}

// The loader's words for what failed last; asking for them clears them.
DString LoaderError() { return DString(dlerror()); }

// A module, or null and what there is to say about it.
void* OpenModule(const DString& file, int options, DString& failure) {
    dlerror();
    void* handle = dlopen(file, LoaderFlags(options));
    if (!handle) failure = "Could not load module " + file + ": " + LoaderError();
    return handle;
}

void* FindSymbol(void* handle, const char* symbol, int options, bool& ok) {
    dlerror();
    void* address = dlsym(handle, SymbolName(symbol, options));
    const char* error = dlerror();
    if (!error) return address;
    ok = false;
    Message("Could not load symbol " + DString(symbol) + ": " + error);
    return nullptr;
}

}  // namespace

DLibrary::~DLibrary() {
    UnloadModules();
    UnloadHandle(m_Handle);
}

void DLibrary::Load(DString const& folder, DString const& name, bool& ok, int options) {
    m_Options = options;
    const DString file =
        options & LoadFileAsNamed ? AppendPathElts(folder, name) : ModuleFile(name);
    DString failure;
    m_Handle = OpenModule(file, options, failure);
    if (m_Handle) return;
    ok = false;
    Message(failure);
    Log(failure);
}

void* DLibrary::GetProc(const char* symbol, bool& ok) {
    if (!m_Handle) {
        ok = false;
        return nullptr;
    }
    return FindSymbol(m_Handle, symbol, m_Options, ok);
}

void* DLibrary::GetProc(DString const& folder, DString const& name, const char* symbol, bool& ok,
                        int options) {
    const DString file =
        AppendPathElts(folder, options & LoadFileAsNamed ? name : ModuleFile(name));
    DString failure;
    void* handle = OpenModule(file, options, failure);
    if (!handle) {
        ok = false;
        Message(failure);
        return nullptr;
    }
    bool found = true;
    void* address = FindSymbol(handle, symbol, options, found);
    if (found) {
        m_Modules.Add(handle);
    } else {
        ok = false;
    }
    return address;
}

void DLibrary::UnloadModules() {
    // A module that goes may call back into the loader; what it opens then stays listed.
    DArray<void*> modules;
    modules.SwapData(m_Modules);
    for (int i = 0; i < modules.Count(); ++i)
        UnloadHandle(modules[i]);
}

void DLibrary::UnloadHandle(void* handle) {
    if (handle) dlclose(handle);
}

void* GetProc(DString const& folder, DString const& name, const char* symbol, bool& ok,
              int options) {
    return DLib.GetProc(folder, name, symbol, ok, options);
}

int DLLConnect(DString const& module, int value, DNotify* sink, DNotify*& returned) {
    using Entry = int (*)(int, DNotify*, DNotify*&);
    bool ok = true;
    DString folder;
    DString name;
    SplitPathElts(module, folder, name);
    void* entry = GetProc(AppendPathElts(GetTarselPath(), folder), name, "TvInit", ok, 0);
    if (!ok || !entry) return 0;
    return reinterpret_cast<Entry>(entry)(value, sink, returned);
}
