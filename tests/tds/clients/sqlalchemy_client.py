# The server through SQLAlchemy: python3 sqlalchemy_client.py <port> <login> <password> <pymssql | pyodbc>
import datetime
import decimal
import sys

import sqlalchemy as sa
from sqlalchemy import orm

port, login, password, driver = sys.argv[1:]
odbc = (f"Driver=FreeTDS;Server=127.0.0.1;Port={port};UID={login};PWD={{{password}}};Database=alchemy_{driver};"
        "TDS_Version=7.4;ClientCharset=UTF-8")
url = {"pymssql": sa.engine.URL.create("mssql+pymssql", login, password, "127.0.0.1", int(port), "alchemy_pymssql"),
       "pyodbc": sa.engine.URL.create("mssql+pyodbc", query={"odbc_connect": odbc})}[driver]
engine = sa.create_engine(url, future=True)

metadata = sa.MetaData()
site = sa.Table(
    "site", metadata,
    sa.Column("id", sa.Integer, sa.Identity(start=10), primary_key=True),
    sa.Column("name", sa.Unicode(40), nullable=False),
    sa.Column("code", sa.CHAR(4), server_default=sa.text("'none'")),
    sa.Column("parent", sa.ForeignKey("site.id", name="fk_parent")),
    sa.UniqueConstraint("name", name="uq_site"))
reading = sa.Table(
    "reading", metadata,
    sa.Column("site_id", sa.ForeignKey("site.id", name="fk_site", ondelete="CASCADE"), primary_key=True),
    sa.Column("number", sa.SmallInteger, primary_key=True, autoincrement=False),
    sa.Column("amount", sa.Numeric(12, 3), sa.CheckConstraint("amount >= 0", name="ck_amount"), nullable=False),
    sa.Column("taken", sa.DateTime),
    sa.Column("note", sa.UnicodeText),
    sa.Column("raw", sa.LargeBinary),
    sa.Column("good", sa.Boolean, server_default=sa.text("1")),
    sa.Index("ix_taken", "number", "taken"))
sa.Table(
    "remark", metadata,
    sa.Column("id", sa.BigInteger, sa.Identity(), primary_key=True),
    sa.Column("site_id", sa.Integer),
    sa.Column("number", sa.SmallInteger),
    sa.ForeignKeyConstraint(["site_id", "number"], ["reading.site_id", "reading.number"], name="fk_reading"))


def column_facts(column):
    kind = column.type.dialect_impl(engine.dialect).compile(engine.dialect).split(" COLLATE")[0].replace("(max)", "")
    default = column.server_default
    text = str(default.arg).strip("()") if isinstance(default, sa.DefaultClause) else None
    return (column.name, kind.replace("NUMERIC", "DECIMAL"), column.nullable, text,
            column.identity and (column.identity.start or 1, column.identity.increment or 1))


def table_facts(table):
    unique = [each for each in table.constraints if isinstance(each, sa.UniqueConstraint)]
    return {"columns": [column_facts(each) for each in table.columns],
            "key": [each.name for each in table.primary_key],
            "references": {(key.name, key.ondelete, tuple(each.target_fullname for each in key.elements),
                            tuple(key.column_keys)) for key in table.foreign_key_constraints},
            "indexes": {(each.name, bool(getattr(each, "unique", True)), tuple(c.name for c in each.columns))
                        for each in [*table.indexes, *unique]}}


def refuses(connection, *statement):
    try:
        with connection.begin_nested():
            connection.execute(*statement)
    except sa.exc.IntegrityError:
        return True


metadata.create_all(engine)
metadata.create_all(engine)  # finds that nothing is missing
reflected = sa.MetaData()
reflected.reflect(engine)
assert set(reflected.tables) == set(metadata.tables)
for name, table in metadata.tables.items():
    assert table_facts(reflected.tables[name]) == table_facts(table), (table_facts(reflected.tables[name]), table_facts(table))

moment = datetime.datetime(2024, 2, 29, 23, 59, 58, 123000)
long = "\u00e4\u20ac\U0001F600" * 3000
with engine.begin() as connection:
    ids = [connection.execute(site.insert(), {"name": each}).inserted_primary_key[0] for each in ("Gr\u00fcn", "it's")]
    assert ids == [10, 11]
    rows = [{"site_id": 10, "number": i, "amount": decimal.Decimal(i) / 8, "taken": moment, "note": long,
             "raw": bytes(range(256)) * 40} for i in range(1, 8)]
    connection.execute(reading.insert(), rows)
    connection.execute(reading.insert(), {"site_id": 11, "number": 1, "amount": 3, "good": False})
    stored = connection.execute(reading.select().order_by(reading.c.site_id, reading.c.number)).mappings().all()
    assert stored == [{**each, "good": True} for each in rows] + [
        {"site_id": 11, "number": 1, "amount": 3, "taken": None, "note": None, "raw": None, "good": False}]

    sums = sa.select(site.c.name, site.c.code, sa.func.sum(reading.c.amount)).join(reading).group_by(
        site.c.name, site.c.code).having(sa.func.count() > 0).order_by(site.c.name.desc())
    assert connection.execute(sums).all() == [("it's", "none", 3), ("Gr\u00fcn", "none", decimal.Decimal("3.5"))]
    page = sa.select(reading.c.number).where(reading.c.site_id == 10).order_by(reading.c.number)
    assert connection.scalars(page.limit(2).offset(3)).all() == [4, 5]
    assert connection.scalars(page.where(reading.c.note.like("%\u20ac%"), reading.c.number.in_([1, 9]))).all() == [1]
    best = sa.select(sa.func.max(reading.c.number)).scalar_subquery()
    assert connection.scalars(page.where(reading.c.number == best)).all() == [7]
    ranked = sa.select(reading.c.number, sa.func.row_number().over(order_by=reading.c.number.desc())).limit(2)
    assert connection.execute(ranked).all() == [(7, 1), (6, 2)]

    def upsert(number, amount):
        place = sa.and_(reading.c.site_id == 11, reading.c.number == number)
        if connection.execute(reading.update().where(place).values(amount=amount)).rowcount == 0:
            connection.execute(reading.insert(), {"site_id": 11, "number": number, "amount": amount})
    for number, amount in (1, 5), (2, 6), (2, 7):
        upsert(number, amount)
    mine = sa.select(reading.c.number, reading.c.amount).where(reading.c.site_id == 11).order_by(reading.c.number)
    assert connection.execute(mine).all() == [(1, 5), (2, 7)]

    for statement in (site.insert().values(name="it's"), site.insert().values(name="x", parent=9),
                      reading.update().values(amount=-1), reading.insert().values(site_id=10, number=1, amount=1)):
        assert refuses(connection, statement), statement
with engine.connect() as connection:
    connection.execute(site.delete().where(site.c.id == 11))
    with connection.begin_nested() as savepoint:
        connection.execute(site.delete())
        savepoint.rollback()
    assert connection.scalar(sa.select(sa.func.count()).select_from(reading)) == 7
    connection.rollback()
    assert connection.scalar(sa.select(sa.func.count()).select_from(reading)) == 9

with engine.connect() as connection:  # looks for the name of a temporary table in tempdb
    connection.execute(sa.text("CREATE TABLE #kept (id int NOT NULL, note nvarchar(20) DEFAULT 'x')"))
    kept = sa.Table("#kept", sa.MetaData(), autoload_with=connection)
    assert [column_facts(each)[:2] for each in kept.columns] == [("id", "INTEGER"), ("note", "NVARCHAR(20)")], kept

with engine.connect().execution_options(isolation_level="AUTOCOMMIT") as connection:  # restores READ COMMITTED
    assert connection.default_isolation_level == "READ COMMITTED"

Mapped = orm.registry().map_imperatively
class Site: pass
class Reading: pass
Mapped(Reading, reading)
Mapped(Site, site, properties={"readings": orm.relationship(Reading, cascade="all, delete-orphan", order_by=reading.c.number)})
with orm.Session(engine) as session:
    found = session.get(Site, 10, options=[orm.selectinload(Site.readings)])
    found.name = "renamed"
    del found.readings[1:]
    found.readings[0].note = "short"
    session.flush()
    session.commit()
    assert [(each.name, len(each.readings)) for each in session.query(Site).order_by(Site.id)] == [("renamed", 1), ("it's", 2)]

metadata.drop_all(engine)
assert sa.inspect(engine).get_table_names() == []
