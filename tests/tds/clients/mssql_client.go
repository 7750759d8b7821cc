// The server through go-mssqldb, built in GOPATH mode: mssql_client <port> <login> <password> <disable | true>
package main

import (
	"bytes"
	"database/sql"
	"fmt"
	"os"
	"strings"
	"time"

	"github.com/denisenkom/go-mssqldb"
)

func check(err error) {
	if err != nil {
		panic(err)
	}
}

func expect(expected, actual interface{}) {
	if expected != actual {
		panic(fmt.Sprintf("expected %v, got %v", expected, actual))
	}
}

// Returns the rows of all results: values separated by '|', each row ended by a blank.
func rows(db *sql.DB, query string, arguments ...interface{}) (text string) {
	result, err := db.Query(query, arguments...)
	check(err)
	defer result.Close()
	for more := true; more; more = result.NextResultSet() {
		columns, err := result.Columns()
		check(err)
		values := make([]interface{}, len(columns))
		for i := range values {
			values[i] = new(interface{})
		}
		for result.Next() {
			check(result.Scan(values...))
			cells := make([]string, len(columns))
			for i, value := range values {
				cells[i] = fmt.Sprint(*value.(*interface{}))
			}
			text += strings.Join(cells, "|") + " "
		}
	}
	check(result.Err())
	return
}

func times(db *sql.DB) {
	moment := time.Date(2024, 2, 29, 23, 59, 58, 123456700, time.UTC)
	_, err := db.Exec("INSERT INTO event VALUES (?, ?, ?, ?)", moment, moment, moment, moment)
	check(err)
	var taken, exact, day, clock time.Time
	check(db.QueryRow("SELECT * FROM event WHERE exact = ?", moment).Scan(&taken, &exact, &day, &clock))
	expect(true, exact.Equal(moment))
	expect(true, taken.Equal(moment.Truncate(time.Second).Add(123*time.Millisecond)))
	expect(true, day.Equal(moment.Truncate(24*time.Hour)))
	expect(123456700, clock.Nanosecond())
	var later time.Time
	check(db.QueryRow("SELECT DATEADD(day, 1, ?)", moment).Scan(&later))
	expect(true, later.Equal(moment.Add(24*time.Hour)))
	check(db.QueryRow("SELECT ?", moment.In(time.FixedZone("east", 3600))).Scan(&later))
	_, offset := later.Zone()
	expect(true, later.Equal(moment) && offset == 3600)
}

func values(db *sql.DB) {
	name := "Gr\u00fcn \U0001F600"
	note := strings.Repeat("\u20ac", 9000)
	raw := bytes.Repeat([]byte{7}, 9000)
	result, err := db.Exec("INSERT INTO reading (name, amount, note, raw, good) VALUES (?, ?, ?, ?, ?)", name, 12.375, note, raw, true)
	check(err)
	count, err := result.RowsAffected()
	check(err)
	expect(int64(1), count)
	statement, err := db.Prepare("INSERT INTO reading (name, amount) VALUES (?, ?)")
	check(err)
	for i := 1; i <= 3; i++ {
		_, err = statement.Exec(fmt.Sprint("n", i), nil)
		check(err)
	}
	check(statement.Close())
	var id int64
	var readName, readNote string
	var amount float64
	var readRaw []byte
	var good bool
	check(db.QueryRow("SELECT * FROM reading WHERE name = ?", name).Scan(&id, &readName, &amount, &readNote, &readRaw, &good))
	expect(int64(1), id)
	expect(name, readName)
	expect(12.375, amount)
	expect(note, readNote)
	expect(true, bytes.Equal(raw, readRaw))
	expect(true, good)
	expect("2|<nil> 3|<nil> 4|<nil> second ", rows(db, "SELECT id, amount FROM reading WHERE id > ? ORDER BY id; SELECT N'second'", 1))
	expect("9223372036854775807|1.5 ", rows(db, "SELECT ?, ?", int64(9223372036854775807), 1.5))
}

func transactions(db *sql.DB) {
	for _, end := range []func(*sql.Tx) error{(*sql.Tx).Rollback, (*sql.Tx).Commit} {
		transaction, err := db.Begin()
		check(err)
		_, err = transaction.Exec("DELETE TOP (2) FROM reading")
		check(err)
		check(end(transaction))
	}
	expect("2 ", rows(db, "SELECT COUNT(*) FROM reading"))
	_, err := db.Exec("SELECT * FROM nowhere")
	expect(int32(208), err.(mssql.Error).Number)
	_, err = db.Exec("CREATE PROCEDURE twice @n int, @text nvarchar(20) = N'x' AS SELECT @n * 2 SELECT @text")
	check(err)
	expect("42 \u00e4 ", rows(db, "EXEC twice ?, ?", 21, "\u00e4"))
}

func main() {
	db, err := sql.Open("mssql", fmt.Sprintf("odbc:server=127.0.0.1;port=%s;user id=%s;password={%s};encrypt=%s;TrustServerCertificate=true",
		os.Args[1], os.Args[2], os.Args[3], os.Args[4]))
	check(err)
	db.SetMaxOpenConns(1) // all in the database that USE chooses
	_, err = db.Exec("CREATE DATABASE go")
	check(err)
	_, err = db.Exec("USE go CREATE TABLE reading (id bigint IDENTITY PRIMARY KEY, name nvarchar(40) NOT NULL, amount float, note nvarchar(max), raw varbinary(max), good bit)" +
		" CREATE TABLE event (taken datetime, exact datetime2(7), day date, clock time(7))")
	check(err)
	values(db)
	transactions(db)
	times(db)
}
