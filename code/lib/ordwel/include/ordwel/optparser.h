// SPDX-License-Identifier: MIT
#ifndef ORDWEL_OPTPARSER_H
#define ORDWEL_OPTPARSER_H

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <ordwel/export.h>
#include <ordwel/types.h>

namespace ordwel {
namespace arg {

class optparser;
/// The option table in the form that optparser::parse looks options up in; private to the parser.
struct opt_lookup;

/// The application's side of a command line: optparser::parse calls operator() once for each option
/// (with the words collected for it) and once for each word of no option (id 1, that word alone).
/// The result is the number of offered words used; words left over are scanned again as words of
/// their own. The result -1 stops the scan, and stopped_at() then tells which id stopped it.
class ORDWEL_API opt_functor {
public:
    /// A callback that has not stopped a scan.
    opt_functor();
    /// Copy which id stopped a scan.
    ///@{
    opt_functor(opt_functor const &a_other);
    opt_functor &operator=(opt_functor const &a_other);
    ///@}
    /// Destroyed by its owner, never by a parser.
    virtual ~opt_functor();

    /// Called with the option's id (1 for a word of no option) and the words offered to it, which
    /// point into argv. Gives the number of words used, or -1 to stop the scan.
    virtual int operator()(int a_id, std::vector<char const *> a_args) = 0;

    /// The id of the callback that stopped the scan, else 0.
    [[nodiscard]] int stopped_at() const;

private:
    friend class optparser;
    /// The option table in the form that optparser::parse looks options up in; private to the parser.
    struct opt_lookup;
    int m_stopped_at;
};

/// A command-line driver and help writer.
///
/// Options are registered by id: an id that is a character code is also the option's short letter
/// (-x), a long name makes it --name, and a negative id with a name is a long-only option. The id 1
/// is reserved for words of no option. parse walks argv and calls the functor, which the parser
/// neither owns nor copies. Errors are "*** " lines on the standard error stream and a false result.
///
/// The help half writes a help screen straight to standard output as each call is made: headings,
/// body text wrapped at the line width in eight-column indentation steps, option labels hanging to
/// the left of their description. On a terminal, emphasis is bright text; with redirected output,
/// plain text; after set_html_output, HTML. Descriptions may carry markup words between "!":
/// !S! and !SE! emphasis, !Q! and !QE! a double quotation mark, !SA! and !SAE! underline ("<" and
/// ">" in text), !SAA! and !SAAE! "<u>" and "</u>" in HTML only, !X! a "!", !LT! and !GT! the
/// texts "&lt;" and "&gt;".
class ORDWEL_API optparser {
public:
    /// A registered option.
    struct opt {
        uint32 m_min; ///< The words that must follow the option.
        uint32 m_max; ///< The words that may follow the option; never below m_min.
        /// The long name, or null for none. Not copied: the text must outlive the parser.
        char const *m_name;
    };
    /// The option table, by id.
    using opts = std::map<int, opt>;

    /// An empty option table over a_functor, which the parser neither owns nor copies. Looks for a
    /// terminal on standard output once, here.
    explicit optparser(opt_functor *a_functor);
    /// Copy the option table and the help state; the copy shares the functor.
    ///@{
    optparser(optparser const &a_other);
    optparser &operator=(optparser const &a_other);
    ///@}
    /// Leaves the functor as it is.
    ~optparser();

    /// Registers (or replaces) an option taking from a_min to a_max words; a_max below a_min counts
    /// as a_min, so (1, 0) means exactly one.
    void add_opt(int a_id, char const *a_name, unsigned int a_min, unsigned int a_max);

    /// Scans argv[1] to argv[a_argc - 1]. True when the scan ended or a callback stopped it; false
    /// after an error line. Besides --name, a long option may be written --name=v1,v2,... which is
    /// read as --name followed by the separate words v1, v2, ...; the words made this way live until
    /// the parser's next parse (one called from a callback aside) or its destruction.
    bool parse(unsigned int a_argc, char **a_argv);

    // ---- help text ----

    /// A described option: its label (-x, --name or both) at level 4, then the wrapped text.
    /// An id that is not registered writes nothing.
    void add_desc(int a_id, char const *a_text);
    /// Body text at the present indentation column.
    void add_desc(char const *a_text);
    /// Set the indentation level 1 to 5 (column 0, 8, 16, 24, 32) and write the heading, if any
    /// (null sets the level alone).
    ///@{
    void add_desc_indent1(char const *a_heading);
    void add_desc_indent2(char const *a_heading);
    void add_desc_indent3(char const *a_heading);
    void add_desc_indent4(char const *a_heading);
    void add_desc_indent5(char const *a_heading);
    ///@}
    /// Ends the line, as new_line.
    void add_desc_paragraph();
    /// An underlined heading in HTML form ("<h3>" or "<h4>", then "<u>" a_text "</u>") at the
    /// present column, written the same in every output mode; the level stays.
    ///@{
    void add_html_underline_h3(char const *a_text);
    void add_html_underline_h4(char const *a_text);
    ///@}

    /// Writes a_text as it is, with no wrapping or markup; in HTML, "<", ">" and "&" are escaped.
    void print(std::string const &a_text);
    /// Ends the line.
    void new_line();

    /// Sets the indentation level: 0 and 1 give column 0, any higher level n column 8n - 8.
    void set_indentation(unsigned int a_level);
    /// The indentation level.
    [[nodiscard]] unsigned int get_indentation() const;
    /// Sets the last column that wrapped text may reach (80 at first); any value is taken.
    void set_text_line_width(unsigned int a_width);
    /// The terminal's width less 8; false (and no change) without a terminal.
    bool set_max_text_line_width();

    /// Emphasis on and off: bright text on a terminal, "<strong>" and "</strong>" in HTML, nothing
    /// with redirected output.
    ///@{
    void text_strong();
    void text_strong_off();
    ///@}
    /// Underline on and off: "<u>" and "</u>" in HTML, "<" and ">" otherwise.
    ///@{
    void text_underline();
    void text_underline_off();
    ///@}

    /// Writes HTML from now on, for good.
    void set_html_output();
    /// Whether set_html_output was called.
    [[nodiscard]] bool is_html_output() const;

    /// Clears the terminal and puts the cursor at its top left; without a terminal, nothing.
    void clear_screen();

private:
    void add_desc(char a_short_name, std::string const &a_long_name, std::string const &a_text);
    void set_column(unsigned int a_count);
    void set_level(unsigned int a_level);
    void heading(char const *a_heading);
    void emit(char const *a_text, std::size_t a_size);
    void emit(std::string const &a_text);
    void body_text(std::string const &a_text, uint32 &a_position);

    opt_functor *m_functor;
    opts m_opts;
    /// Built from m_opts by the first parse that needs it; dropped whenever m_opts changes.
    std::unique_ptr<opt_lookup> m_lookup;
    /// Words made from --name=v1,v2 forms; a deque, so the words already handed out never move.
    /// Cleared when an outermost parse starts: a parse called from a callback keeps its caller's.
    std::deque<std::string> m_split_words;
    unsigned int m_parse_depth;

    uint32 m_indentation;
    uint32 m_text_line_width;
    uint32 m_column;
    bool m_html_output;
    bool m_no_console;
    /// The terminal as found at construction: an opaque handle, its size and its base attribute.
    void *m_console;
    struct console_info {
        uint32 m_width;
        uint32 m_height;
        uint16 m_attributes;
    } m_console_info;
};

} // namespace arg

// The callback classes of the "parseopt" self-test unit.
namespace ordkin {

/// Counts its calls and uses every word it is offered; fails the running test case when an option
/// arrives with a word count outside its range, or a word of no option arrives not alone.
struct ORDWEL_API functor : public arg::opt_functor {
    /// No calls counted.
    functor();
    /// Copy the count.
    ///@{
    functor(functor const &a_other);
    functor &operator=(functor const &a_other);
    ///@}
    ~functor() override;
    /// Counts the call, checks it and gives the number of words offered.
    int operator()(int a_id, std::vector<char const *> a_args) override;

    int m_count; ///< The calls so far.
};

/// Counts its calls, uses m_result words for id 101 and every offered word otherwise; fails when a
/// word of no option arrives not alone.
struct ORDWEL_API functor2 : public arg::opt_functor {
    /// No calls counted, result 0.
    functor2();
    /// Copy the result and the count.
    ///@{
    functor2(functor2 const &a_other);
    functor2 &operator=(functor2 const &a_other);
    ///@}
    ~functor2() override;
    /// Counts the call, checks it and gives m_result for id 101, else the number of words offered.
    int operator()(int a_id, std::vector<char const *> a_args) override;

    int m_result; ///< What a call for id 101 gives.
    int m_count;  ///< The calls so far.
};

} // namespace ordkin
} // namespace ordwel

#endif
