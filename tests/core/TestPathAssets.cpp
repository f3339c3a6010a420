#include "core/Assets.h"
#include "core/Path.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace Tarsel;
namespace fs = std::filesystem;

TEST(Path, SplitsIntoParts)
{
	const Path path("lib/shaders/wood.tsl");
	EXPECT_EQ(path.Filename(), "wood.tsl");
	EXPECT_EQ(path.Stem(), "wood");
	EXPECT_EQ(path.Extension(), ".tsl");
	EXPECT_EQ(path.ParentPath().AsString(), "lib/shaders");
	EXPECT_EQ(path.Directories(), (std::vector<std::string>{"lib", "shaders"}));
	EXPECT_TRUE(path.IsRelative());
	EXPECT_FALSE(path.IsDirectory());

	// Dots and slashes in awkward places.
	EXPECT_EQ(Path(".hidden").Extension(), "");
	EXPECT_EQ(Path("a.b.c").Extension(), ".c");
	EXPECT_EQ(Path("dir.d/name").Extension(), "");
	EXPECT_TRUE(Path("a/..").IsDirectory());
	EXPECT_EQ(Path("/a").ParentPath().AsString(), "/");
	EXPECT_EQ(Path("/x//y/z.tsl").Directories(), (std::vector<std::string>{"x", "y"}));
	EXPECT_FALSE(Path("").IsValid());
}

namespace
{
class AssetsTest : public ::testing::Test
{
protected:
	void SetUp() override
	{
		std::string pattern = (fs::temp_directory_path() / "tarsel-assets-XXXXXX").string();
		_root = mkdtemp(&pattern[0]);
		fs::create_directories(_root / "first");
		fs::create_directories(_root / "second");
		fs::create_directories(_root / "env");
		Write("second/lib.tsl", "second");
		Write("env/lib.tsl", "env");
		Write("env/only.tsl", "only env");
		setenv("TARSEL_SHADER_PATH", ((_root / "nowhere").string() + "::" + (_root / "env").string()).c_str(),
		       1);
	}
	void TearDown() override
	{
		GetMgrAssets()->ClearSearchRoots();
		unsetenv("TARSEL_SHADER_PATH");
		fs::remove_all(_root);
	}
	void Write(const std::string& name, const std::string& text) { std::ofstream(_root / name) << text; }
	std::string Read(const std::string& name, IAsset::Status& status, std::string* pResolved = nullptr)
	{
		IAsset* pAsset = GetMgrAssets()->Acquire(Path(name), 1, status);
		if (pAsset == nullptr)
			return "<none>";
		std::string sText = pAsset->GetData();
		if (pResolved)
			*pResolved = pAsset->GetDescription();
		GetMgrAssets()->Release(pAsset);
		return sText;
	}
	fs::path _root;
};
} // namespace

TEST_F(AssetsTest, SearchRootsInOrderThenEnvironment)
{
	GetMgrAssets()->AddSearchRoot(Path((_root / "first").string()));
	GetMgrAssets()->AddSearchRoot(Path((_root / "second").string()));
	IAsset::Status status;
	std::string sResolved;
	EXPECT_EQ(Read("lib.tsl", status, &sResolved), "second");
	EXPECT_EQ(sResolved, (_root / "second" / "lib.tsl").string());

	Write("first/lib.tsl", "first");
	EXPECT_EQ(Read("lib.tsl", status), "first");
	EXPECT_EQ(Read("only.tsl", status), "only env");
	EXPECT_EQ(status, IAsset::kStatus_Ok);
}

TEST_F(AssetsTest, CurrentDirectoryComesBeforeRoots)
{
	GetMgrAssets()->AddSearchRoot(Path((_root / "second").string()));
	Write("first/lib.tsl", "current");
	const fs::path previous = fs::current_path();
	fs::current_path(_root / "first");
	IAsset::Status status;
	std::string sResolved;
	const std::string sText = Read("lib.tsl", status, &sResolved);
	fs::current_path(previous);
	EXPECT_EQ(sText, "current");
	EXPECT_EQ(sResolved, "lib.tsl");
}

TEST_F(AssetsTest, DirectoryOfTheSameNameDoesNotHideALaterFile)
{
	fs::create_directories(_root / "first" / "lib.tsl");
	GetMgrAssets()->AddSearchRoot(Path((_root / "first").string()));
	GetMgrAssets()->AddSearchRoot(Path((_root / "second").string()));
	IAsset::Status status;
	EXPECT_EQ(Read("lib.tsl", status), "second");
}

TEST_F(AssetsTest, DataIsZeroTerminatedAndMayBeEmpty)
{
	Write("env/empty.tsl", "");
	IAsset::Status status;
	IAsset* pAsset = GetMgrAssets()->Acquire(Path("empty.tsl"), 1, status);
	ASSERT_NE(pAsset, nullptr);
	EXPECT_EQ(pAsset->GetSize(), 0u);
	EXPECT_STREQ(pAsset->GetData(), "");
	GetMgrAssets()->Release(pAsset);

	std::ofstream(_root / "env" / "binary.tsl", std::ios::binary).write("a\0b", 3);
	pAsset = GetMgrAssets()->Acquire(Path("binary.tsl"), 1, status);
	ASSERT_NE(pAsset, nullptr);
	EXPECT_EQ(pAsset->GetSize(), 3u);
	EXPECT_EQ(pAsset->GetData()[3], '\0');
	GetMgrAssets()->Release(pAsset);
}

TEST_F(AssetsTest, MissingUnreadableAndDirectoryAreToldApart)
{
	IAsset::Status status;
	EXPECT_EQ(Read("nowhere.tsl", status), "<none>");
	EXPECT_EQ(status, IAsset::kStatus_NotFound);
	EXPECT_EQ(Read((_root / "env").string(), status), "<none>");
	EXPECT_EQ(status, IAsset::kStatus_IsDirectory);
	// Opens, but every read fails: an unreadable file even for root.
	EXPECT_EQ(Read("/proc/self/mem", status), "<none>");
	EXPECT_EQ(status, IAsset::kStatus_Unreadable);
	if (geteuid() != 0)
	{
		chmod((_root / "env" / "only.tsl").c_str(), 0);
		EXPECT_EQ(Read("only.tsl", status), "<none>");
		EXPECT_EQ(status, IAsset::kStatus_Unreadable);
	}
	EXPECT_STRNE(IAsset::StatusString(IAsset::kStatus_NotFound),
	             IAsset::StatusString(IAsset::kStatus_IsDirectory));
	EXPECT_STRNE(IAsset::StatusString(IAsset::kStatus_Unreadable),
	             IAsset::StatusString(IAsset::kStatus_NotFound));
}
