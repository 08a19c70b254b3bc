#include "server/trial/sample.h"

namespace trial {
namespace {

constexpr const char* webs[] = {"sites/trial", "sites/trial/design", "sites/trial/legal"};

constexpr const char* libraries[] = {
    "Shared Documents",
    "sites/trial/Shared Documents",
    "sites/trial/Shared Documents/Archive",
    "sites/trial/design/Drawings",
    "sites/trial/legal/Contracts",
};

struct Paper {
    const char* path;
    const char* title;
    int pages;
};

constexpr Paper papers[] = {
    {"Shared Documents/Welcome.pdf", "Welcome", 1},
    {"sites/trial/Shared Documents/Annual report.pdf", "Annual report", 4},
    {"sites/trial/Shared Documents/Minutes 2024-03.pdf", "Minutes of March", 2},
    {"sites/trial/Shared Documents/R\u00e9sum\u00e9 & CV [draft].pdf", "Resume", 1},
    {"sites/trial/Shared Documents/Archive/Minutes 2023-12.pdf", "Minutes of December", 2},
    {"sites/trial/design/Drawings/Front elevation.pdf", "Front elevation", 1},
    {"sites/trial/design/Drawings/Ground floor.pdf", "Ground floor", 3},
    {"sites/trial/legal/Contracts/Lease.pdf", "Lease", 5},
    {"sites/trial/legal/Contracts/100% guarantee.pdf", "Guarantee", 1},
};

struct Note {
    const char* path;
    const char* text;
};

constexpr Note notes[] = {
    {"Shared Documents/Read me.txt", "Everything here may be changed, moved and removed.\n"},
    {"sites/trial/Shared Documents/Agenda.txt", "1. Minutes\n2. Report\n3. Any other business\n"},
    {"sites/trial/design/Drawings/Colours.xml",
     "<?xml version=\"1.0\"?>\n<colours><wall>white</wall><door>green</door></colours>\n"},
    {"sites/trial/legal/Contracts/Parties.html",
     "<!DOCTYPE html>\n<title>Parties</title>\n<p>The landlord and the tenant.</p>\n"},
};

void Put(Store& store, const char* path, std::string_view content) {
    const auto upload = store.BeginUpload();
    upload->Write(content);
    store.Commit(*upload, path, {.is_owner_of_all = true});
}

std::vector<std::vector<std::string>> PagesOf(const Paper& paper) {
    std::vector<std::vector<std::string>> pages;
    for (int page = 1; page <= paper.pages; ++page) {
        pages.push_back({paper.title, "Page " + std::to_string(page) + " of " + std::to_string(paper.pages),
                         "This document is there to be opened, changed and saved back."});
    }
    return pages;
}

} // namespace

void FillWithSample(Store& store) {
    if (!store.List("").empty())
        return;
    for (const char* web : webs) {
        store.MakeFolders(web);
        store.AddWeb(web);
    }
    for (const char* library : libraries)
        store.MakeFolders(library);
    for (const Paper& paper : papers)
        Put(store, paper.path, MakePdf(paper.title, PagesOf(paper)));
    for (const Note& note : notes)
        Put(store, note.path, note.text);
}

} // namespace trial
