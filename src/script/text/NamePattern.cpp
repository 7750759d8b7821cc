#include "text/NamePattern.h"

namespace {

std::string likePattern(std::string_view pattern) {
    std::string like;
    for (const char c : pattern) {
        switch (c) {
            case '*':
                like += '%';
                break;
            case '?':
                like += '_';
                break;
            case '%':
            case '_':
            case '[':
                like += {'[', c, ']'};
                break;
            case '\'':
                like += "''";
                break;
            default:
                like += c;
        }
    }
    return like;
}

}  // namespace

std::string nameCondition(std::string_view pattern) {
    return "name LIKE N'" + likePattern(pattern) + "'";
}
