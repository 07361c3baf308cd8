#include "Shard.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace fs = std::filesystem;
using namespace testing_support;

TEST(Shard, ParsesOnlyKOfNWithKFromOneToN)
{
    const std::pair<const char *, std::pair<std::uint32_t, std::uint32_t>> good[] = {
        {"1/2", {1, 2}}, {"2/2", {2, 2}}, {"1/1", {1, 1}}, {"10/12", {10, 12}}, {"07/9", {7, 9}}};
    for (const auto &[text, expected] : good) {
        SCOPED_TRACE(text);
        const auto shard = Shard::parse(text);
        ASSERT_TRUE(shard);
        EXPECT_EQ(std::pair(shard->index, shard->count), expected);
    }
    for (const char *bad : {"0/2", "3/2", "2/0", "0/0", "", "/", "1/", "/2", "a/2", "1/b", "1/2/3", " 1/2",
                            "1/2 ", "+1/2", "-1/2", "1.0/2", "1:2", "4294967296/4294967297"})
        EXPECT_FALSE(Shard::parse(bad)) << '"' << bad << '"';
}

TEST(Shard, KeysAreRelativeToTheArgumentWhateverItsSpelling)
{
    struct Row {
        const char *file;
        const char *argument;
        const char *key;
    };
    const Row rows[] = {
        {"/mnt/archive/1999/Brief.wpd", "/mnt/archive", "1999/Brief.wpd"},
        {"/mnt/archive/1999/Brief.wpd", "/mnt/archive/", "1999/Brief.wpd"},
        {"/mnt/archive/./1999//Brief.wpd", "/mnt/./archive", "1999/Brief.wpd"},
        {"/home/ann/copy/archive/1999/Brief.wpd", "/home/ann/copy/archive", "1999/Brief.wpd"},
        {"/mnt/archive/Brief.wpd", "/mnt/archive/Brief.wpd", "Brief.wpd"},
        {"/elsewhere/Brief.wpd", "/mnt/archive", "Brief.wpd"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.file) + " under " + row.argument);
        EXPECT_EQ(Shard::keyOf(row.file, row.argument).generic_string(), row.key);
    }
}

// The shard of a key is the same on every machine: these values come from
// Python's hashlib (first eight bytes of SHA-256, big-endian, mod N, plus 1),
// so a change of the hash, which would split mixed versions of a cluster
// wrongly, fails here.
TEST(Shard, TheSameKeyLandsInTheSameShardEverywhere)
{
    struct Row {
        const char *key;
        std::uint32_t count;
        std::uint32_t shard;
    };
    const Row rows[] = {
        {"letters/1999/Brief.wpd", 7, 5},
        {"a.wpd", 2, 1},
        {"Akten/M\u00fcller/Vertrag 3.wp", 2, 2},
        {"x/y/z.doc", 1000, 488},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.key);
        EXPECT_EQ(Shard::of(row.key, row.count), row.shard);
    }
}

TEST(Shard, ShardsTogetherListEveryFileOfATreeExactlyOnce)
{
    TempDir first;
    TempDir second;
    std::vector<std::string> names;
    for (int i = 0; i < 60; ++i)
        names.push_back("folder " + std::to_string(i % 7) + "/sub" + std::to_string(i % 3) + "/Brief " +
                        std::to_string(i) + (i % 5 == 0 ? ".WPD" : ".wp"));
    names.push_back("caf\xe9/Latin-1 name.wpd");
    names.push_back("\xe6\x97\xa5\xe6\x9c\xac/\xe6\x96\x87\xe6\x9b\xb8.wpd");
    for (const auto &root : {first.path(), second.path() / "mounted" / "deeper"}) {
        for (const auto &name : names) {
            fs::create_directories((root / name).parent_path());
            writeFile(root / name, "x");
        }
    }
    for (const std::uint32_t count : {1u, 2u, 3u}) {
        SCOPED_TRACE(std::to_string(count) + " shards");
        std::map<std::string, std::vector<std::uint32_t>> shardsOf;
        for (const auto &root : {first.path(), second.path() / "mounted" / "deeper"}) {
            for (const auto &entry : fs::recursive_directory_iterator(root)) {
                if (!entry.is_regular_file())
                    continue;
                const std::string relative = entry.path().lexically_relative(root).generic_string();
                for (std::uint32_t index = 1; index <= count; ++index) {
                    if (Shard{index, count}.takes(entry.path(), root))
                        shardsOf[relative].push_back(index);
                }
            }
        }
        ASSERT_EQ(shardsOf.size(), names.size());
        std::set<std::uint32_t> used;
        for (const auto &[relative, shards] : shardsOf) {
            ASSERT_EQ(shards.size(), 2u) << relative << ": one shard in each copy of the archive";
            EXPECT_EQ(shards[0], shards[1]) << relative << ": the same wherever the archive lies";
            used.insert(shards[0]);
        }
        EXPECT_EQ(used.size(), count) << "no shard left empty by 62 files";
    }
}

TEST(Shard, ShardsShareALargeArchiveEvenly)
{
    std::map<std::uint32_t, int> sizes;
    for (int i = 0; i < 4000; ++i)
        ++sizes[Shard::of("box " + std::to_string(i / 100) + "/file" + std::to_string(i) + ".wpd", 4)];
    ASSERT_EQ(sizes.size(), 4u);
    for (const auto &[shard, size] : sizes)
        EXPECT_TRUE(size > 850 && size < 1150) << "shard " << shard << " holds " << size << " of 4000";
}
