#include "packing/Skeleton.h"

#include <ctime>
#include <string_view>

namespace {

// Comments are in the script, because every line of the other sections is content.
constexpr std::string_view kSkeleton = R"(#START_OPTIONS#
Creation Time:<time>
<database>Description:Says in one sentence what the script does.
Parameter:days int(1..3650) 30 "Age in days"
Parameter:mode choice(count|delete) count "What to do"
#START_USAGE#
<name> [--days DAYS] [--mode MODE]
  DAYS  age in days (default 30)
  MODE  count or delete (default count)
#START_SCRIPT#
-- tscript run gives each placeholder the value of the Parameter line at the same place of the header. A
-- value arrives as text: CONVERT it to the type that the statements need. A DECLARE holds for one batch.
SET NOCOUNT ON
DECLARE @days int, @mode varchar(10)
SET @days = CONVERT(int, '%s')
SET @mode = '%s'
IF @mode = 'delete'
BEGIN
    -- An error ends the run at this batch; what earlier batches have done stays.
    RAISERROR('Deleting is not written yet.', 16, 1)
    RETURN
END
PRINT 'Would look at what is older than ' + CONVERT(varchar(10), @days) + ' day(s).'
GO
-- GO ends a batch. Empty lines are dropped when the package is packed.
PRINT 'Done.'
GO
)";

void replace(std::string& text, std::string_view placeholder, const std::string& value) {
    text.replace(text.find(placeholder), placeholder.size(), value);
}

}  // namespace

std::string packageSkeleton(const std::string& name, const std::string& database) {
    std::string text(kSkeleton);
    replace(text, "<name>", name);
    replace(text, "<database>", database.empty() ? "" : "Database Name:" + database + "\n");
    replace(text, "<time>", std::to_string(std::time(nullptr)));
    return text;
}
