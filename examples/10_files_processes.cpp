// SPDX-License-Identifier: MIT
#include <cstdio>
#include <future>
#include <string>

#include <ordwel/ordwel.h>

using namespace ordwel;

struct sorted : process::status {
    std::promise<void> ended;
    void stdout_data(unsigned char const *a_data, unsigned int a_size) override
    {
        std::fwrite(a_data, 1, a_size, stdout);
    }
    void finished(process *) override { ended.set_value(); }
};

int main()
{
    std::string const path = env::get_default_tmp_path() + fileutil::create_safe_filename("notes: day 1.txt");
    fileutil::set_file_content(path, std::string("hello, file\n"));   // .../notes._day_1.txt
    std::string text;
    fileutil::get_file_content(path, text);            // a failed open raises es::file
    fileutil::remove_file(path);
    std::fputs(text.c_str(), stdout);

    sorted watcher;
    process child("sort", "/usr/bin/sort", {}, {}, "", "b\na\n", process_capture, &watcher);
    watcher.ended.get_future().wait();                 // prints "a\nb\n"; child.get_status() is 0
    std::printf("%s\n", url_create_from_url_or_path("\\\\host\\share\\a b", "").c_str());   // smb://host/share/a%20b
}
