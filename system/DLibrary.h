/// DLibrary: loads further shared modules at run time and finds symbols in them. It remembers what
/// it opened, so that all of it can be closed together. The global DLib is the one instance in use.
///
/// Failures are told by a message ("Could not load module ...", "Could not load symbol ...", with
/// the loader's own words behind) and by setting a flag to false; the flag is never set to true
/// here, so set it before a call.
#pragma once

#include "types/DArray.h"
#include "types/DString.h"

/// Options of a load, to be added up. Other bits are ignored.
enum LoadOption : int {
    LoadLazily = 1,       ///< bind symbols when they are first used, not at once
    LoadFileAsNamed = 8,  ///< the name is the file's; without it the file is "lib", the name, ".so"
    LoadFortranName = 16,  ///< look the symbol up in small letters with "_" behind it
    LoadGlobally = 32      ///< its symbols serve modules that are loaded later
};

class DLibrary {
public:
    void* m_Handle = nullptr;  ///< the module opened by Load; null for none
    int m_Options = 0;         ///< the options that Load was given
    DArray<void*> m_Modules;   ///< the modules opened by the longer GetProc, in order of opening

    DLibrary() = default;
    DLibrary(const DLibrary&) = delete;
    DLibrary& operator=(const DLibrary&) = delete;
    /// UnloadModules, then closes m_Handle.
    ~DLibrary();

    /// Opens a module as m_Handle. The folder counts only with LoadFileAsNamed; otherwise the
    /// loader's own search path decides. A failure goes to the log too. What m_Handle held
    /// before is not closed; it is null after a failure.
    void Load(DString const& folder, DString const& name, bool& ok, int options);
    /// A symbol of m_Handle. Null, with no message, if nothing is loaded; null, with one, if it
    /// isn't there. A symbol whose address is null counts as found.
    void* GetProc(const char* symbol, bool& ok);
    /// Opens a module in `folder`, anew at each call, and finds a symbol in it. A module without
    /// the symbol stays open and isn't remembered.
    void* GetProc(DString const& folder, DString const& name, const char* symbol, bool& ok,
                  int options);
    /// Closes every module in m_Modules, in order, and empties the list.
    void UnloadModules();
    /// Closes a module, unless the handle is null; m_Modules stays.
    void UnloadHandle(void* handle);
};

extern DLibrary DLib;

/// The longer GetProc of DLib.
void* GetProc(DString const& folder, DString const& name, const char* symbol, bool& ok,
              int options);
