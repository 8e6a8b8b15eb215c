#include "doctor_checks.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

#include "doctor_cleaners.h"
#include "gtest/gtest.h"
#include "kqsup/tree.h"
#include "nlohmann/json.hpp"
#include "support/program.h"

namespace {

using kqsup::CleanerLine;
using kqsup::Finding;
using kqsup::Health;
using kqsup::Host;
using kqsup::HostPaths;
using kqsup::Root;
using kqsupt::tests::built_program;
using kqsupt::tests::Outcome;
using kqsupt::tests::run;
using kqsupt::tests::run_native;
using kqsupt::tests::Tree;
using nlohmann::ordered_json;

constexpr time_t kNow = 1700000000;

// A host on which all is well.
class KqsupDoctor : public testing::Test {
 protected:
  KqsupDoctor() {
    tree_.write("etc/ybreg.cfg",
                "wexlib.installpath=/opt/wexlib\nwexlib.vardatapath=/opt/wexlib/var\n"
                "Quillance.installpath=/opt/q\nQuillance.logpath=/opt/q/log\n");
    tree_.make("opt/wexlib/var/.ipc");
    tree_.make("opt/q/log/log");
    tree_.write("proc/sys/kernel/sem", "32000\t1024000000\t500\t32000\n");
    tree_.write("proc/sys/kernel/shmmni", "4096\n");
    tree_.write("proc/sys/kernel/shmmax", "18446744073692774399\n");
    tree_.write("proc/sys/kernel/msgmni", "32000\n");
    tree_.write("proc/sys/kernel/shmall", "18446744073692774399\n");
    tree_.write("proc/sys/fs/protected_regular", "2\n");
    tree_.write("proc/sysvipc/sem", kSemTitles);
    tree_.write("proc/sysvipc/shm", kShmTitles);
    tree_.write("proc/sysvipc/msg", "       key      msqid perms\n");
    tree_.write("usr/lib/systemd/systemd-logind", "");
    tree_.write("etc/systemd/logind.conf", "[Login]\nRemoveIPC=no\n");
  }

  [[nodiscard]] Host host(time_t now = kNow) const {
    const Root root(tree_.root());
    return {root, HostPaths(root, [](const char*) -> const char* { return nullptr; }), now};
  }

  void mount_for_reading(const std::string& path) const {
    const std::string directory = tree_.at(path);
    ASSERT_EQ(run_native({"mount", "--bind", directory, directory}).exit_status, 0);
    ASSERT_EQ(run_native({"mount", "-o", "remount,bind,ro", directory}).exit_status, 0);
  }
  void unmount(const std::string& path) const {
    EXPECT_EQ(run_native({"umount", "-l", tree_.at(path)}).exit_status, 0);
  }

  const char* const kSemTitles =
      "       key      semid perms      nsems   uid   gid  cuid  cgid      otime      ctime\n";
  const char* const kShmTitles =
      "       key      shmid perms                  size  cpid  lpid nattch   uid   gid  cuid  "
      "cgid      atime      dtime      ctime                   rss                  swap\n";
  const char* const kNames =
      "[Unique String Name Key Section]\nkqsupsmp0123456789ABCDEF0123456789ABCDEF=300001\n\n"
      "[Unique Numeric Value Key Section]\n300001=kqsupsmp0123456789ABCDEF0123456789ABCDEF\n\n"
      "[Semaphore List]\n65538=4711\n";
  Tree tree_;
};

struct stat about(mode_t mode, uid_t owner) {
  struct stat about {};
  about.st_mode = mode;
  about.st_uid = owner;
  return about;
}

TEST_F(KqsupDoctor, FindsNothingWhereAllIsWell) {
  for (const Finding& finding : examine(host())) {
    EXPECT_EQ(finding.health, Health::kOk) << finding.check << ": " << finding.found;
    EXPECT_NE(finding.why, "");
    EXPECT_EQ(finding.to_do, "");
  }
  EXPECT_EQ(examine(host()).size(), 13U);
}

TEST_F(KqsupDoctor, SaysWhatToDoOnAHostThatHasNothing) {
  const Tree empty;
  const Root root(empty.root());
  const Host host{root, HostPaths(root, [](const char*) -> const char* { return nullptr; }), 0};
  for (const Finding& finding : examine(host)) {
    EXPECT_EQ(finding.to_do.empty(), finding.health == Health::kOk) << finding.check;
    EXPECT_NE(finding.found, "") << finding.check;
  }
  EXPECT_EQ(check_registry(host).health, Health::kWrong);
  EXPECT_EQ(check_ipc_directory(host).health, Health::kWrong);
  EXPECT_EQ(check_logs(host).health, Health::kWrong);
}

TEST_F(KqsupDoctor, WantsARegistryThatCanBeReadAndNamesAProduct) {
  tree_.write("etc/ybreg.cfg", "other.installpath=/x\n");
  EXPECT_EQ(check_registry(host()).health, Health::kWrong);
  std::filesystem::remove(tree_.at("etc/ybreg.cfg"));
  tree_.make("etc/ybreg.cfg");
  EXPECT_EQ(check_registry(host()).health, Health::kWrong);
}

TEST_F(KqsupDoctor, WantsADirectoryOfSharedObjects) {
  std::filesystem::remove(tree_.at("opt/wexlib/var/.ipc"));
  const Finding missing = check_ipc_directory(host());
  EXPECT_EQ(missing.health, Health::kWrong);
  EXPECT_EQ(missing.found, "/opt/wexlib/var/.ipc: No such file or directory");
  tree_.write("opt/wexlib/var/.ipc", "");
  EXPECT_EQ(check_ipc_directory(host()).health, Health::kWrong);
  std::filesystem::remove_all(tree_.at("opt/wexlib"));
  EXPECT_EQ(check_ipc_directory(host()).health, Health::kWrong);
}

TEST_F(KqsupDoctor, LooksForItWithTheOtherProductWhereTheFirstHasNone) {
  tree_.write("etc/ybreg.cfg", "nurb.installpath=/opt/nurb\n");
  tree_.make("opt/nurb/.ipc");
  EXPECT_EQ(check_ipc_directory(host()).health, Health::kOk);
}

TEST_F(KqsupDoctor, WantsADirectoryOfSharedObjectsThatIsNotMountedForReading) {
  mount_for_reading("opt/wexlib/var/.ipc");
  const Finding finding = check_ipc_directory(host());
  unmount("opt/wexlib/var/.ipc");
  EXPECT_EQ(finding.found, "/opt/wexlib/var/.ipc: Read-only file system");
  EXPECT_EQ(finding.to_do,
            "Let the users whose agents share objects write to /opt/wexlib/var/.ipc.");
  EXPECT_EQ(finding.health, Health::kWrong);
}

TEST(KqsupDoctorJudges, TheOwnerAndModeOfTheIpcDirectory) {
  const auto health = [](mode_t mode, uid_t owner, uid_t parent_owner) {
    return kqsup::judge_ipc_directory("/v/.ipc", about(mode, owner),
                                      about(S_IFDIR | 0755, parent_owner))
        .health;
  };
  EXPECT_EQ(health(S_IFDIR | 0755, 0, 0), Health::kOk);
  EXPECT_EQ(health(S_IFDIR | 02770, 120, 120), Health::kOk);
  EXPECT_EQ(health(S_IFDIR | 0755, 0, 120), Health::kOk);
  EXPECT_EQ(health(S_IFDIR | 0755, 121, 120), Health::kWrong);
  EXPECT_EQ(health(S_IFDIR | 0555, 0, 0), Health::kWrong);
  EXPECT_EQ(health(S_IFDIR | 0777, 0, 0), Health::kWarning);
  EXPECT_EQ(health(S_IFDIR | 01777, 0, 0), Health::kOk);
  EXPECT_EQ(health(S_IFREG | 0777, 0, 0), Health::kWrong);
}

TEST_F(KqsupDoctor, CountsWhatTheLimitsLeave) {
  tree_.write("proc/sys/kernel/sem", "250 100 32 4\n");
  const std::string set = "    300001          0   664         30     0     0     0     0  0  0\n";
  tree_.write("proc/sysvipc/sem", kSemTitles + set + set);
  EXPECT_EQ(check_limits(host())[0].found, "2 of 4");
  EXPECT_EQ(check_limits(host())[0].health, Health::kOk);
  EXPECT_EQ(check_limits(host())[1].found, "60 of 100");
  tree_.write("proc/sysvipc/sem", kSemTitles + set + set + set);
  EXPECT_EQ(check_limits(host())[1].health, Health::kWarning);
  tree_.write("proc/sysvipc/sem", kSemTitles + set + set + set + set);
  EXPECT_EQ(check_limits(host())[0].health, Health::kWrong);
  tree_.write("proc/sys/kernel/shmmni", "1\n");
  tree_.write("proc/sysvipc/shm", kShmTitles + std::string("300001 0 664 100 1 1 0 0 0 0 0\n"));
  EXPECT_EQ(check_limits(host())[2].health, Health::kWrong);
}

TEST_F(KqsupDoctor, CountsThePagesOfAllSegments) {
  const auto page = static_cast<unsigned long long>(sysconf(_SC_PAGESIZE));
  tree_.write("proc/sys/kernel/shmall", "4\n");
  const auto segment = [&](unsigned long long size) {
    return "300001 0 664 " + std::to_string(size) + " 1 1 0 0 0 0 0\n";
  };
  tree_.write("proc/sysvipc/shm", kShmTitles + segment(1) + segment(page));
  EXPECT_EQ(check_limits(host())[4].found, "2 of 4 pages");
  EXPECT_EQ(check_limits(host())[4].health, Health::kOk);
  tree_.write("proc/sysvipc/shm", kShmTitles + segment(1) + segment(2 * page + 1));
  EXPECT_EQ(check_limits(host())[4].health, Health::kWrong);
}

TEST_F(KqsupDoctor, WarnsOfMessageQueuesAtTheMost) {
  tree_.write("proc/sys/kernel/msgmni", "0\n");
  EXPECT_EQ(check_limits(host())[3].health, Health::kWarning);
}

TEST_F(KqsupDoctor, WantsSegmentsThatARecordFitsInto) {
  tree_.write("proc/sys/kernel/shmmax", "65535\n");
  EXPECT_EQ(check_limits(host())[5].health, Health::kWrong);
  tree_.write("proc/sys/kernel/shmmax", "65536\n");
  EXPECT_EQ(check_limits(host())[5].health, Health::kWarning);
}

TEST_F(KqsupDoctor, WarnsOfLimitsThatCannotBeRead) {
  for (const char* content : {"", "x y z w", "1 2 3", "1 -2 3 -4"}) {
    tree_.write("proc/sys/kernel/sem", content);
    EXPECT_EQ(check_limits(host())[0].health, Health::kWarning) << content;
  }
  std::filesystem::remove(tree_.at("proc/sysvipc/shm"));
  EXPECT_EQ(check_limits(host())[2].health, Health::kWarning);
}

TEST_F(KqsupDoctor, WarnsOfLogindWhichRemovesObjectsUnlessTold) {
  tree_.write("etc/systemd/logind.conf", "[Login]\n#RemoveIPC=no\n");
  EXPECT_EQ(check_logind(host()).health, Health::kWarning);
  tree_.write("usr/lib/systemd/logind.conf.d/50-a.conf", "[Other]\nRemoveIPC=no\n");
  EXPECT_EQ(check_logind(host()).health, Health::kWarning);
  tree_.write("usr/lib/systemd/logind.conf.d/50-a.conf", "[Login]\n RemoveIPC = off \n");
  EXPECT_EQ(check_logind(host()).health, Health::kOk);
  tree_.write("etc/systemd/logind.conf.d/60-b.conf", "[Login]\nRemoveIPC=\n");
  EXPECT_EQ(check_logind(host()).health, Health::kWarning);
  std::filesystem::remove(tree_.at("etc/systemd/logind.conf.d/60-b.conf"));
  tree_.write("etc/systemd/logind.conf.d/50-a.conf", "");  // stands for the other one
  EXPECT_EQ(check_logind(host()).health, Health::kWarning);
  std::filesystem::remove(tree_.at("usr/lib/systemd/systemd-logind"));
  EXPECT_EQ(check_logind(host()).health, Health::kOk);
}

TEST_F(KqsupDoctor, FindsObjectsThatLogindWillRemove) {
  tree_.write("etc/systemd/logind.conf", "");
  tree_.write("opt/wexlib/var/.ipc/.lxsuptIPCini", kNames);
  tree_.write("proc/sysvipc/sem", kSemTitles + std::string("300001 0 664 1 999 0 999 0 0 0\n"));
  EXPECT_EQ(check_logind(host()).health, Health::kWarning);
  tree_.write("proc/sysvipc/sem", kSemTitles + std::string("300000 0 664 1 1000 0 1000 0 0 0\n"));
  EXPECT_EQ(check_logind(host()).health, Health::kWarning);
  tree_.write("proc/sysvipc/sem", kSemTitles + std::string("300001 0 664 1 1000 0 1000 0 0 0\n"));
  EXPECT_EQ(check_logind(host()).health, Health::kWrong);
  tree_.write("etc/systemd/logind.conf", "[Login]\nRemoveIPC=false");
  EXPECT_EQ(check_logind(host()).health, Health::kOk);
}

TEST_F(KqsupDoctor, KnowsTheObjectsOfAgentsByTheRegistryOfNames) {
  tree_.write("etc/systemd/logind.conf", "");
  const auto health = [this](const std::string& set) {
    tree_.write("proc/sysvipc/sem", kSemTitles + set + " 1 1000 0 1000 0 0 0\n");
    return check_logind(host()).health;
  };
  EXPECT_EQ(health("300001 7 664"), Health::kWarning);
  tree_.write("opt/wexlib/var/.ipc/.lxsuptIPCini", kNames);
  EXPECT_EQ(health("300001 7 664"), Health::kWrong);
  EXPECT_EQ(health("300002 7 664"), Health::kWarning);
  EXPECT_EQ(health("1627521025 7 664"), Health::kWarning);  // of ftok()
  EXPECT_EQ(health("-1879048191 7 664"), Health::kWarning);
  EXPECT_EQ(health("0 7 664"), Health::kWarning);
  EXPECT_EQ(health("0 65538 664"), Health::kWrong);  // in the list of sets
  tree_.write("proc/sysvipc/sem", kSemTitles);
  tree_.write("proc/sysvipc/shm", kShmTitles + std::string("0 65538 664 1 1 1 0 1000 0 1000 0\n"));
  EXPECT_EQ(check_logind(host()).health, Health::kWarning);
  tree_.write("proc/sysvipc/shm", kShmTitles + std::string("300001 7 664 1 1 1 0 0 0 1000 0\n"));
  EXPECT_EQ(check_logind(host()).health, Health::kWrong);
}

TEST_F(KqsupDoctor, ReadsTheFirstMainFileOfLogindThatThereIs) {
  std::filesystem::remove(tree_.at("etc/systemd/logind.conf"));
  tree_.write("usr/lib/systemd/logind.conf", "[Login]\nRemoveIPC=yes\n");
  EXPECT_EQ(check_logind(host()).health, Health::kWarning);
  tree_.write("usr/local/lib/systemd/logind.conf", "[Login]\nRemoveIPC=no\n");
  EXPECT_EQ(check_logind(host()).health, Health::kOk);
  tree_.write("run/systemd/logind.conf", "");
  EXPECT_EQ(check_logind(host()).health, Health::kWarning);
}

TEST_F(KqsupDoctor, WarnsOfStickyDirectoriesUnderProtection) {
  ASSERT_EQ(chmod(tree_.at("opt/q/log/log").c_str(), 01777), 0);
  EXPECT_EQ(check_protected_files(host()).health, Health::kWarning);
  tree_.write("proc/sys/fs/protected_regular", "0\n");
  EXPECT_EQ(check_protected_files(host()).health, Health::kOk);
  std::filesystem::remove(tree_.at("proc/sys/fs/protected_regular"));
  EXPECT_EQ(check_protected_files(host()).health, Health::kOk);
  tree_.write("proc/sys/fs/protected_regular", "");
  EXPECT_EQ(check_protected_files(host()).health, Health::kWarning);
}

TEST(KqsupDoctorJudges, FilesOfOthersInAStickyDirectory) {
  const auto health = [](int level, mode_t mode, const std::vector<uid_t>& owners) {
    return kqsup::judge_protected_files(level, "/d", about(S_IFDIR | mode, 0), owners).health;
  };
  EXPECT_EQ(health(1, 01777, {0, 1000}), Health::kWrong);
  EXPECT_EQ(health(1, 01777, {0, 0}), Health::kWarning);
  EXPECT_EQ(health(1, 01775, {0, 1000}), Health::kOk);
  EXPECT_EQ(health(2, 01775, {0, 1000}), Health::kWrong);
  EXPECT_EQ(health(2, 0777, {0, 1000}), Health::kOk);
  EXPECT_EQ(health(0, 01777, {0, 1000}), Health::kOk);
}

TEST_F(KqsupDoctor, FindsCleanersOverTheVariableData) {
  tree_.write("usr/lib/tmpfiles.d/a.conf", "q /opt 0755 - - 10d\n");
  const Finding finding = check_cleaners(host());
  EXPECT_EQ(finding.health, Health::kWrong);
  EXPECT_EQ(finding.found, "q /opt after 10d is over /opt/wexlib/var/.ipc");
  tree_.write("run/tmpfiles.d/b.conf", "x /opt/wex*\n");
  EXPECT_EQ(check_cleaners(host()).health, Health::kOk);
  tree_.write("etc/tmpfiles.d/b.conf", "");
  EXPECT_EQ(check_cleaners(host()).health, Health::kWrong);
  tree_.write("etc/tmpfiles.d/a.conf", "# nothing\n");
  EXPECT_EQ(check_cleaners(host()).health, Health::kOk);
}

TEST_F(KqsupDoctor, FindsCleanersOverWhatALinkLeadsTo) {
  std::filesystem::remove_all(tree_.at("opt/wexlib/var"));
  tree_.make("var/tmp/v/.ipc");
  std::filesystem::create_directory_symlink("../../var/tmp/v", tree_.at("opt/wexlib/var"));
  EXPECT_EQ(check_cleaners(host()).health, Health::kOk);
  tree_.write("usr/lib/tmpfiles.d/a.conf", "q /var/tmp 1777 - - 10d\n");
  const Finding finding = check_cleaners(host());
  EXPECT_EQ(finding.health, Health::kWrong);
  EXPECT_EQ(finding.found, "q /var/tmp after 10d is over /var/tmp/v/.ipc");
  EXPECT_NE(finding.to_do.find("\"x /var/tmp/v\""), std::string::npos) << finding.to_do;
}

TEST_F(KqsupDoctor, WarnsOfDailyCleanersThatNameADirectoryAboveTheVariableData) {
  tree_.write("etc/tmpreaper.conf", "# TMPREAPER_DIRS=/opt\nTMPREAPER_DIRS='/tmp/. /var/tmp/.'\n");
  EXPECT_EQ(check_cleaners(host()).health, Health::kOk);
  tree_.write("etc/tmpreaper.conf", "TMPREAPER_DIRS='/tmp/. /opt/wexlib/.'\n");
  const Finding finding = check_cleaners(host());
  EXPECT_EQ(finding.health, Health::kWarning);
  EXPECT_EQ(finding.found,
            "/etc/tmpreaper.conf names /opt/wexlib, which is over /opt/wexlib/var/.ipc");
  tree_.write("etc/tmpreaper.conf", "TMPREAPER_DIRS='/ /.. /opt/wexlib/variable'\n");
  EXPECT_EQ(check_cleaners(host()).health, Health::kOk);
  tree_.write("etc/cron.daily/tmpwatch", "#!/bin/sh\n/usr/sbin/tmpwatch -umc 10d /tmp /opt/*\n");
  EXPECT_EQ(check_cleaners(host()).found,
            "/etc/cron.daily/tmpwatch names /opt, which is over /opt/wexlib/var/.ipc");
}

TEST_F(KqsupDoctor, DailyCleanersMayNameWhatTheySpare) {
  tree_.write("etc/tmpreaper.conf", "TMPREAPER_PROTECT_EXTRA='/opt/wexlib'\nTMPREAPER_DIRS=/tmp\n");
  tree_.write("etc/cron.daily/tmpwatch", "tmpwatch -umc -x /opt/wexlib/var 10d /tmp\n");
  EXPECT_EQ(check_cleaners(host()).health, Health::kOk);
  tree_.write("etc/cron.daily/tmpwatch", "tmpwatch -umc -x /opt/wexlib/var 10d /opt\n");
  EXPECT_EQ(check_cleaners(host()).health, Health::kWarning);
}

TEST(KqsupDoctorJudges, WhichPathsADailyCleanerIsToldToClean) {
  const auto paths = [](const char* line) {
    std::string all;
    for (const std::string& path : kqsup::cleaned_paths(line)) {
      all += path + " ";
    }
    return all;
  };
  EXPECT_EQ(paths("tmpwatch -umc 10d /tmp '/opt/*'"), "/tmp /opt ");
  EXPECT_EQ(paths("tmpwatch -x /a -x  '/b' 10d /c"), "/c ");
  EXPECT_EQ(paths("tmpwatch --exclude=/a --exclude /b --exclude='/c' /d"), "/d ");
  EXPECT_EQ(paths("tmpwatch -x \"$SPARED\" /a"), "/a ");
  EXPECT_EQ(paths("tmpwatch /a -x"), "/a ");
  EXPECT_EQ(paths("TMPREAPER_PROTECT_EXTRA='/a /b/*'"), "");
  EXPECT_EQ(paths("DIRS='/a' # PROTECT /b"), "/a ");
}

TEST_F(KqsupDoctor, ReadsNoMoreOfAFileThanAMebibyte) {
  const std::string line = "d /opt - - - 5d\n";
  const std::string blank(1U << 20U, '\n');
  tree_.write("usr/lib/tmpfiles.d/a.conf", blank + line);
  EXPECT_EQ(check_cleaners(host()).health, Health::kOk);
  tree_.write("usr/lib/tmpfiles.d/a.conf", blank.substr(line.size()) + line);
  EXPECT_EQ(check_cleaners(host()).health, Health::kWrong);
}

TEST(KqsupDoctorJudges, WhichLineCleansADirectory) {
  using namespace std::string_view_literals;
  const auto cleaner = [](std::string_view text) {
    const std::vector<CleanerLine> lines = kqsup::cleaner_lines(text);
    const CleanerLine* line = kqsup::cleaner_of(lines, "/var/tmp/v/.ipc");
    return line != nullptr ? line->type + " " + line->path : "none";
  };
  EXPECT_EQ(cleaner(""), "none");
  EXPECT_EQ(cleaner("d /var/tmp 1777 root root 30d"), "d /var/tmp");
  EXPECT_EQ(cleaner("d /var/tmp 1777 root root -"), "none");
  EXPECT_EQ(cleaner("d /var/tmp"), "none");
  EXPECT_EQ(cleaner("D /var/tmp"), "D /var/tmp");
  EXPECT_EQ(cleaner("R! /var/tmp/v"), "R! /var/tmp/v");
  EXPECT_EQ(cleaner("e \"/var/tmp/*\" - - - 5d"), "e /var/tmp/*");
  EXPECT_EQ(cleaner("d /var/tm - - - 5d"), "none");
  EXPECT_EQ(cleaner("d %V/ - - - 5d"), "d /var/tmp");
  EXPECT_EQ(cleaner("d /%b/ - - - 5d"), "none");
  EXPECT_EQ(cleaner("f /var/tmp - - - 5d"), "none");
  EXPECT_EQ(cleaner("d /var/tmp - - - 5d\nd /var/tmp/v 0755 - - -"), "none");
  EXPECT_EQ(cleaner("d /var - - - 5d\nX /var/tmp/v"), "d /var");
  EXPECT_EQ(cleaner("d"), "none");
  EXPECT_EQ(cleaner("\"\" \"\"\nd \"/var/tmp"), "none");
  EXPECT_EQ(cleaner("%\nd %\nd \\"), "none");
  EXPECT_EQ(cleaner("\0 /var/tmp - - - 5d"sv), "none");
  EXPECT_EQ(cleaner("d /var - - - 5d\n\0 /var/*"sv), "d /var");
}

TEST_F(KqsupDoctor, WantsLogsThatCanBeWritten) {
  std::filesystem::remove(tree_.at("opt/q/log/log"));
  EXPECT_EQ(check_logs(host()).health, Health::kOk);  // the first event makes it
  tree_.write("opt/q/log/log", "");
  EXPECT_EQ(check_logs(host()).health, Health::kWrong);
  std::filesystem::remove(tree_.at("opt/q/log/log"));
  tree_.make("opt/q/log/log/kqsys32.xml");
  EXPECT_EQ(check_logs(host()).found, "/opt/q/log/log/kqsys32.xml: It is no regular file");
  std::filesystem::remove_all(tree_.at("opt/q/log"));
  EXPECT_EQ(check_logs(host()).health, Health::kWrong);
}

TEST_F(KqsupDoctor, WantsToReadTheLogInXmlOnly) {
  tree_.write("opt/q/log/log/kqsys32.log", "");
  ASSERT_EQ(chmod(tree_.at("opt/q/log/log/kqsys32.log").c_str(), 0222), 0);
  // Root may read everything but for these.
  kqsupt::tests::Command command{"setpriv", "--inh-caps", "-all", "--bounding-set",
                                 "-dac_override,-dac_read_search"};
  for (const std::string& word : kqsupt::tests::with_runner(
           {built_program("kqsup"), "doctor", "--json", "--root", tree_.root()})) {
    command.push_back(word);
  }
  const auto logs = [&command] {
    return ordered_json::parse(run_native(command).out, nullptr, false)[11];
  };
  EXPECT_EQ(logs()["check"], "event logs");
  EXPECT_EQ(logs()["state"], "ok") << logs();
  tree_.write("opt/q/log/log/kqsys32.xml", "");
  ASSERT_EQ(chmod(tree_.at("opt/q/log/log/kqsys32.xml").c_str(), 0222), 0);
  EXPECT_EQ(logs()["found"], "/opt/q/log/log/kqsys32.xml: Permission denied");
  EXPECT_EQ(logs()["state"], "wrong");
}

TEST_F(KqsupDoctor, FindsLogsOnADiskThatIsMountedForReading) {
  mount_for_reading("opt/q/log/log");
  const Finding finding = check_logs(host());
  unmount("opt/q/log/log");
  EXPECT_EQ(finding.found, "/opt/q/log/log: Read-only file system");
  EXPECT_EQ(finding.health, Health::kWrong);
}

TEST_F(KqsupDoctor, FindsAClockBefore2000) {
  EXPECT_EQ(check_clock(host(946684799)).health, Health::kWrong);
  EXPECT_EQ(check_clock(host(0)).found, "1970-01-01 00:00 UTC");
  EXPECT_EQ(check_clock(host(946684800)).health, Health::kOk);
}

TEST_F(KqsupDoctor, EndsWithOneWhenSomethingIsWrongAndChangesNothing) {
  const std::vector<std::string> command{built_program("kqsup"), "doctor", "--json", "--root",
                                         tree_.root()};
  auto before = tree_.state();
  Outcome outcome = run(command);
  EXPECT_EQ(outcome.exit_status, 0) << outcome.out;
  EXPECT_EQ(ordered_json::parse(outcome.out).size(), 13U);
  EXPECT_EQ(tree_.state(), before);

  std::filesystem::remove(tree_.at("opt/wexlib/var/.ipc"));
  before = tree_.state();
  outcome = run(command);
  EXPECT_EQ(outcome.exit_status, 1) << outcome.err;
  EXPECT_EQ(ordered_json::parse(outcome.out)[1]["state"], "wrong");
  EXPECT_EQ(tree_.state(), before);
}

TEST_F(KqsupDoctor, LeavesTheTimeOfTheLastLook) {
  tree_.write("etc/systemd/logind.conf", "[Login]\n");
  tree_.write("etc/systemd/logind.conf.d/a.conf", "[Login]\n");
  tree_.write("usr/lib/tmpfiles.d/a.conf", "q /tmp 1777 - - 10d\n");
  tree_.write("etc/tmpreaper.conf", "TMPREAPER_DIRS=/tmp\n");
  tree_.write("opt/wexlib/var/.ipc/.lxsuptIPCini", kNames);
  for (const char* shared : {"opt/wexlib/var/.ipc", "opt/q/log/log"}) {
    ASSERT_EQ(chmod(tree_.at(shared).c_str(), 01777), 0);
  }
  const char* const paths[] = {"etc/ybreg.cfg",
                               "etc/systemd/logind.conf",
                               "etc/systemd/logind.conf.d",
                               "etc/systemd/logind.conf.d/a.conf",
                               "etc/tmpreaper.conf",
                               "opt/wexlib/var/.ipc",
                               "opt/wexlib/var/.ipc/.lxsuptIPCini",
                               "opt/q/log/log",
                               "usr/lib/tmpfiles.d",
                               "usr/lib/tmpfiles.d/a.conf"};
  constexpr time_t kLastLook = 1000000;
  for (const char* path : paths) {
    const struct timespec times[2] = {{kLastLook, 0}, {0, UTIME_OMIT}};
    ASSERT_EQ(utimensat(AT_FDCWD, tree_.at(path).c_str(), times, 0), 0) << path;
  }
  (void)examine(host());
  for (const char* path : paths) {
    struct stat after {};
    ASSERT_EQ(stat(tree_.at(path).c_str(), &after), 0) << path;
    EXPECT_EQ(after.st_atim.tv_sec, kLastLook) << path;
  }
}

TEST_F(KqsupDoctor, CannotLookBelowWhatIsNoDirectory) {
  for (const char* path : {"nothing", "etc/ybreg.cfg"}) {
    const Outcome outcome = run({built_program("kqsup"), "doctor", "--root", tree_.at(path)});
    EXPECT_EQ(outcome.exit_status, 2) << path;
    EXPECT_EQ(outcome.out, "") << path;
  }
}

TEST_F(KqsupDoctor, ChangesNothingInTheSandboxEither) {
  const std::string installed = std::string(std::getenv("KQSUPT_SANDBOX")) + "/install";
  const auto before = Tree::state_of(installed);
  const Outcome outcome = run({built_program("kqsup"), "doctor"});
  EXPECT_NE(outcome.exit_status, 2) << outcome.err;
  EXPECT_TRUE(outcome.out.starts_with("CHECK")) << outcome.out;
  EXPECT_EQ(Tree::state_of(installed), before);
}

TEST_F(KqsupDoctor, TellsHowItIsUsed) {
  const Outcome outcome = run({built_program("kqsup"), "doctor", "--help"});
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_NE(outcome.out.find("Example: kqsup doctor"), std::string::npos);
}

}  // namespace
