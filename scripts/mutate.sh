#!/usr/bin/env bash
# Plants each fault listed at the end of this file, one at a time, in a
# scratch copy of the tree, runs the tests and names every fault that no test
# catches. A fault the tests miss is a behaviour nothing guards.
#
#   scripts/mutate.sh              every fault
#   scripts/mutate.sh PATTERN      only the faults whose title matches PATTERN
#
# The scratch copy lives in $QUORVEL_MUTATE_DIR (default
# /var/tmp/quorvel-mutate) and keeps its build between runs, so a second run
# only rebuilds what changed. Ends with status 0 only when every fault planted
# was caught.
#
# A fault is a block of lines, blocks separated by a blank line:
#   fault:   what goes wrong, as a player or a reviewer would say it
#   file:    the source file, from the top of the tree
#   find:    text that occurs exactly once in that file
#   replace: what it becomes (\n and \t are a line break and a tab)
#   tests:   optional CTest regex of the suites expected to catch it; they run
#            first, and the whole suite runs when they do not
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
python3 -u - "$PWD" "$0" "${1:-}" <<'PY'
import os, re, subprocess, sys, shutil

top, script, pattern = sys.argv[1], sys.argv[2], sys.argv[3]
scratch = os.environ.get("QUORVEL_MUTATE_DIR", "/var/tmp/quorvel-mutate")
build = os.path.join(scratch, "build")


def parse_faults(text):
    faults = []
    for block in re.split(r"\n\s*\n", text.split("\n#### FAULTS ####\n", 1)[1]):
        fields = {}
        for line in block.splitlines():
            if line.startswith("#") or not line.strip():
                continue
            key, _, value = line.partition(":")
            fields[key.strip()] = value[1:] if value.startswith(" ") else value
        if fields:
            missing = {"fault", "file", "find", "replace"} - fields.keys()
            if missing:
                sys.exit(f"mutate: a fault lacks {', '.join(sorted(missing))}: {block!r}")
            for key in ("find", "replace"):
                fields[key] = fields[key].replace("\\n", "\n").replace("\\t", "\t")
            faults.append(fields)
    return faults


def copy_tree():
    # Only what git knows of (committed or not, never ignored), and only the
    # files that differ, so the scratch build stays incremental.
    listed = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        cwd=top, check=True, capture_output=True).stdout.decode().split("\0")
    wanted = {path for path in listed if path and os.path.isfile(os.path.join(top, path))}
    for path in wanted:
        source, target = os.path.join(top, path), os.path.join(scratch, path)
        with open(source, "rb") as f:
            data = f.read()
        if os.path.isfile(target):
            with open(target, "rb") as f:
                if f.read() == data:
                    continue
        os.makedirs(os.path.dirname(target), exist_ok=True)
        # A fresh time stamp, so the build sees the change even when the
        # copied file is older than what was built from the last one.
        shutil.copy(source, target)
    for root, dirs, files in os.walk(scratch):
        if root == scratch:
            dirs[:] = [d for d in dirs if d != "build"]
        for name in files:
            path = os.path.relpath(os.path.join(root, name), scratch)
            if path not in wanted:
                os.remove(os.path.join(root, name))


def run(command, log):
    with open(log, "w") as out:
        return subprocess.run(command, cwd=scratch, stdout=out, stderr=subprocess.STDOUT).returncode


def failed_tests(log):
    with open(log) as f:
        text = f.read()
    return re.findall(r"^\s*\d+ - (\S+) \(", text.split("The following tests FAILED:")[-1], re.M) \
        if "The following tests FAILED:" in text else []


def ctest(regex, log):
    command = ["ctest", "--test-dir", "build", "-j2", "--stop-on-failure", "--timeout", "600"]
    if regex:
        command += ["-R", regex]
    return run(command, log)


faults = parse_faults(open(script, encoding="utf-8").read())
if pattern:
    faults = [f for f in faults if re.search(pattern, f["fault"])]
if not faults:
    sys.exit("mutate: no fault matches")

os.makedirs(scratch, exist_ok=True)
copy_tree()
configure = ["cmake", "-S", ".", "-B", "build", "-G", "Ninja", "-DCMAKE_BUILD_TYPE=RelWithDebInfo",
             "-DQUORVEL_BENCHMARKS=OFF"]
if shutil.which("ccache"):
    configure += ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache", "-DCMAKE_C_COMPILER_LAUNCHER=ccache"]
log = os.path.join(scratch, "mutate.log")
if run(configure, log) or run(["cmake", "--build", "build"], log):
    sys.exit(f"mutate: the unchanged tree does not build; see {log}")
if ctest("", log):
    sys.exit(f"mutate: the unchanged tree fails its tests; see {log}")
print(f"mutate: the unchanged tree passes; planting {len(faults)} faults")

survivors, broken = [], []
for number, fault in enumerate(faults, 1):
    path = os.path.join(scratch, fault["file"])
    with open(path, encoding="utf-8") as f:
        original = f.read()
    title = f"{number:2}. {fault['fault']}"
    if original.count(fault["find"]) != 1:
        print(f"CANNOT PLANT  {title}: the text occurs {original.count(fault['find'])} times in {fault['file']}")
        broken.append(title)
        continue
    with open(path, "w", encoding="utf-8") as f:
        f.write(original.replace(fault["find"], fault["replace"]))
    try:
        log = os.path.join(scratch, f"fault-{number}.log")
        if run(["cmake", "--build", "build"], log):
            print(f"DOES NOT BUILD {title}: see {log}")
            broken.append(title)
            continue
        caught = bool(fault.get("tests")) and ctest(fault["tests"], log) != 0
        if not caught:
            caught = ctest("", log) != 0
        if caught:
            print(f"caught        {title}  (by {', '.join(failed_tests(log)) or 'the tests'})")
        else:
            print(f"SURVIVED      {title}")
            survivors.append(title)
    finally:
        with open(path, "w", encoding="utf-8") as f:
            f.write(original)

run(["cmake", "--build", "build"], os.path.join(scratch, "mutate.log"))
print(f"mutate: {len(faults) - len(survivors) - len(broken)} of {len(faults)} faults caught")
for title in survivors:
    print(f"  survived: {title}")
for title in broken:
    print(f"  not planted: {title}")
sys.exit(1 if survivors or broken else 0)
PY
exit $?

#### FAULTS ####

# --- the windows, the dialogs and the platform (src/app, src/dialogs, src/platform) ---
fault: Escape or the close control on a Yes/No/Cancel box answers No
file: src/platform/QtPlatform.cpp
find: buttons == Buttons::YesNoCancel ? Answer::Cancel
replace: buttons == Buttons::YesNoCancel ? Answer::No
tests: tst_Commands

fault: a message box shows its lines joined by CR LF
file: src/platform/QtPlatform.cpp
find: QMessageBox box(ToQt(icon), title, shown,
replace: QMessageBox box(ToQt(icon), title, text,
tests: tst_Commands

fault: a box with the exclamation icon shows the information one
file: src/platform/QtPlatform.cpp
find:     case Icon::Exclamation:\n        return QMessageBox::Warning;
replace:     case Icon::Exclamation:\n        return QMessageBox::Information;
tests: tst_Commands

fault: Save Game stays disabled after a game is loaded
file: src/app/frmMain_Commands.cpp
find:     mnuSaveGame->setEnabled(true);\n    SetUpBoard(record.codes);
replace:     SetUpBoard(record.codes);
tests: tst_Commands|tst_Play

fault: the congratulation banner stays over a game loaded after a win
file: src/app/frmMain_Commands.cpp
find:     imgCong->hide();\n    game.steps = record.steps;
replace:     game.steps = record.steps;
tests: tst_Play

fault: a loaded game's level keeps the level file's name
file: src/app/frmMain_Commands.cpp
find:     levels[game.levelIndex].levelName = record.levelName;\n
replace: 
tests: tst_Commands

fault: Yes to saving the current game saves nothing
file: src/app/frmMain_Commands.cpp
find:     if (answer == Answer::Yes)\n        mnuSaveGame_Click();\n    return answer != Answer::Cancel;
replace:     return answer != Answer::Cancel;
tests: tst_Commands

fault: a double-click on a block is no press, so a quick second grab is lost
file: src/app/ImageControl.cpp
find:     mousePressEvent(event);\n}
replace:     event->ignore();\n}
tests: tst_Play

fault: the right button takes hold of a block too
file: src/app/frmMain_Moves.cpp
find: if (Button != 1 || gliding_)
replace: if (Button == 0 || gliding_)
tests: tst_Play

fault: an arrow key moves a block while another is held by the mouse
file: src/app/frmMain_Moves.cpp
find: return playing_ && !drag.dragging;
replace: return playing_;
tests: tst_Play

fault: Escape keeps the selected block
file: src/app/frmMain_Moves.cpp
find:     case Qt::Key_Escape:\n        Select(-1);
replace:     case Qt::Key_Escape:\n        Select(selected_);
tests: tst_Play

fault: Restart Level leaves the old step count on the status line
file: src/app/frmMain_Moves.cpp
find:     gameChanged = true;\n    ShowStatus();\n    UpdateGameMenu();\n}\n\nvoid frmMain::mnuHint_Click()
replace:     gameChanged = true;\n    UpdateGameMenu();\n}\n\nvoid frmMain::mnuHint_Click()
tests: tst_Play

fault: Restart Level enabled before the first step
file: src/app/frmMain_Moves.cpp
find: mnuRestart->setEnabled(playing_ && history.CanUndo());
replace: mnuRestart->setEnabled(playing_);
tests: tst_Play

fault: a win is not recorded among the player's bests
file: src/app/frmMain_Moves.cpp
find:     progress_.GameWon(this, game.levelIndex, game.steps);
replace: 
tests: tst_Play

fault: the status line numbers the levels from 0
file: src/app/frmMain.cpp
find: int16_t(game.levelIndex + 1);
replace: int16_t(game.levelIndex);
tests: tst_Window|tst_Play

fault: the easter egg leaves the last small block as it was
file: src/app/frmMain.cpp
find: for (int16_t i = 6; i <= 9; ++i)
replace: for (int16_t i = 6; i < 9; ++i)
tests: tst_Window

fault: the easter egg's picture press takes Ctrl along with Shift
file: src/dialogs/frmAbout.cpp
find: if (eggStep != 3 || Shift != ShiftKey)
replace: if (eggStep != 3 || !(Shift & ShiftKey))
tests: tst_Window

fault: the player's own skin loses to a shipped one of the same name
file: src/app/ProgramFolders.cpp
find: if (!Installed() || QFileInfo(own).isFile())
replace: if (!Installed())
tests: tst_Commands

fault: the help page is looked for among the player's files
file: src/app/frmMain_Commands.cpp
find: const QString path = folders_.data + QStringLiteral("/qvl.html");
replace: const QString path = folders_.player + QStringLiteral("/qvl.html");
tests: tst_Commands

fault: Cancel on the level chooser starts the selected level
file: src/dialogs/frmLevel.cpp
find:     newLevel = -1;\n    QDialog::reject();
replace:     newLevel = int16_t(lisLevel->currentRow());\n    QDialog::reject();
tests: tst_Commands

fault: Return on the level chooser takes the first button
file: src/dialogs/frmLevel.cpp
find:     for (QPushButton *button : {cmdSetLevel, cmdCancel})\n        button->setAutoDefault(false);
replace: 
tests: tst_Commands

fault: the file chooser's tab goes to the confirm button before Cancel
file: src/dialogs/frmFile.cpp
find:     setTabOrder(filList, cmdCancel);\n    setTabOrder(cmdCancel, cmdSet);
replace:     setTabOrder(filList, cmdSet);\n    setTabOrder(cmdSet, cmdCancel);
tests: tst_Commands

fault: the file chooser no longer lists upper-case extensions
file: src/dialogs/frmFile.cpp
find:     dir.setFilter(QDir::Files);
replace:     dir.setFilter(QDir::Files | QDir::CaseSensitive);
tests: tst_Commands

fault: the choosers open at the main window's left edge
file: src/dialogs/DialogPlacement.cpp
find: ownerOuter.width() * unitsPerPixelX, outer.width()
replace: outer.width() * unitsPerPixelX, outer.width()
tests: tst_Commands

fault: the main window is not centred again once a window manager has framed it
file: src/app/frmMain.cpp
find:     else\n        new CentreWhenFramed(*this, centredBy);
replace: 
tests: tst_RealWindow

# --- the files and the skins (src/files, src/skin) ---

fault: the code page's en dash and em dash swapped
file: src/files/CodePage.cpp
find:     0x2013,\n    0x2014,
replace:     0x2014,\n    0x2013,
tests: tst_Files

fault: a colon allowed in a saved game's name
file: src/files/SavedGame.cpp
find: code == ':'
replace: false
tests: tst_Files

fault: a double quote allowed in a saved game's name
file: src/files/SavedGame.cpp
find: code == '"'
replace: false
tests: tst_Files

fault: a backslash allowed in a saved game's name
file: src/files/SavedGame.cpp
find: code == '\\'
replace: false
tests: tst_Files

fault: an asterisk allowed in a saved game's name
file: src/files/SavedGame.cpp
find: code == '*'
replace: false
tests: tst_Files

fault: the last control character (31) allowed in a saved game's name
file: src/files/SavedGame.cpp
find: code < 32
replace: code < 31
tests: tst_Files

fault: the name check refuses the character of code 254 instead of 255
file: src/files/SavedGame.cpp
find: code == 255
replace: code == 254
tests: tst_Files

fault: a writable settings file in a read-only folder is no longer rewritten in place
file: src/files/RawFile.cpp
find: return existed && (number == EACCES
replace: return false && (number == EACCES
tests: tst_Files

fault: the atomic replace writes over the old file in place
file: src/files/RawFile.cpp
find:     const int fd = OpenTemporary(native, temporary);
replace:     if (existed)\n        return RewriteInPlace(native, bytes);\n    const int fd = OpenTemporary(native, temporary);
tests: tst_Files

fault: writing a saved game over a longer file cuts off its tail
file: src/files/RawFile.cpp
find: O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW
replace: O_WRONLY | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW
tests: tst_Files

fault: the settings file's first field no longer honours double quotes
file: src/files/Settings.cpp
find: content[start] == '"') {
replace: content[start] == '\'') {
tests: tst_Files

fault: a skin name with a comma is written without its quotes
file: src/files/Settings.cpp
find: '"' + name +
replace: name +
tests: tst_Files

fault: ".." taken for a skin's plain file name
file: src/files/Settings.cpp
find: name != QLatin1String("..")
replace: true
tests: tst_Files

fault: a saved game's level index read one byte off
file: src/files/SavedGame.cpp
find: read.levelIndex = ReadInt16(bytes, SavedLevelIndexAt);
replace: read.levelIndex = ReadInt16(bytes, SavedLevelIndexAt + 1);
tests: tst_Files

fault: a saved game naming level 71 is taken
file: src/files/SavedGame.cpp
find: read.levelIndex >= LevelCount
replace: read.levelIndex > LevelCount
tests: tst_Files

fault: the player's record keeps the higher best of two copies
file: src/files/PlayerFile.cpp
find: other.best[at] < into.best[at]
replace: other.best[at] > into.best[at]
tests: tst_Files

fault: the player's record is written without taking its lock
file: src/files/PlayerFile.cpp
find: FileError error = lock.Take(path)
replace: FileError error = FileError {}
tests: tst_Files

fault: a level's name read one character short
file: src/files/LevelFile.cpp
find: FromAnsi(bytes.mid(at, LevelNameLength))
replace: FromAnsi(bytes.mid(at, LevelNameLength - 1))
tests: tst_Files

fault: a level file one byte short is taken
file: src/files/LevelFile.cpp
find: bytes.size() < LevelFileSize
replace: bytes.size() < LevelFileSize - 1
tests: tst_Files

fault: a BMP's pixel rows measured without its headers, so one cut short is decoded
file: src/skin/PictureFormats.cpp
find: if (stride > (file.size() - qint64(dataAt)) / rows)
replace: if (stride > file.size() / rows)
tests: tst_Pictures

fault: a GIF frame checked by its corner only, so one larger than its picture is decoded
file: src/skin/PictureBudget.cpp
find: if (left + Le16(file, at + 4) > width || top + Le16(file, at + 6) > height)
replace: if (left > width || top > height)
tests: tst_Pictures

fault: the WMF drawing budget a thousand times too large
file: src/skin/PictureBudget.h
find: MaxWmfPixelWork = qint64(48) << 20
replace: MaxWmfPixelWork = qint64(48) << 30
tests: tst_Pictures

fault: a raster picture's size checked in pixels rather than bytes
file: src/skin/PictureLoader.cpp
find: if (width * height * 4 > AllocationLimit)
replace: if (width * height > AllocationLimit)
tests: tst_Pictures

fault: a skin picture too small for its parts is cut anyway
file: src/skin/PictureClip.cpp
find:  || !picture_.rect().contains(clip_)
replace: 
tests: tst_Skins

fault: a finer picture's parts cut a row of cells too high
file: src/skin/PictureClip.cpp
find: clip_.y() * scale_
replace: clip_.y()
tests: tst_Skins
