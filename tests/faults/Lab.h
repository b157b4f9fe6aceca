/// An experiment to be harmed: two groups of shots, fields, and a file of each kind of data. What a
/// fault left of it is compared file by file.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

/// The files and folders below a folder by their paths from there; a folder's content is "/".
using Snapshot = std::map<std::string, std::string>;

Snapshot TakeSnapshot(const std::string& folder);
/// Brings the folder back to what it was, with as few changes as that takes.
void Restore(const std::string& folder, const Snapshot& snapshot);

/// Makes the experiment Lab in the scratch folder: the groups Shots, with the shots 7 and 8, and
/// Archive, with the shot Old. The library isn't asked for it, but for the data files, which a
/// child process makes.
void MakeLab();
/// Starts a session of a C host in that experiment and selects the shot 7.
void OpenLab();

/// What the harm may have left: each file as it stands in one of the `states`. A text file may also
/// stand `between` them: no line is there that none of them has, and none is gone that all of them
/// have. Log.txt isn't looked at.
void ExpectOneOf(const std::vector<Snapshot>& states, const std::string& folder, bool between);

/// A session goes on: fields and data of the shot 7 are stored and come back, and those of other
/// shots are what they were.
void ExpectWorkingSession();

/// Runs the body in a child process as a user without special rights, who owns all files of the
/// test.
void AsNobody(const std::function<void()>& body);
