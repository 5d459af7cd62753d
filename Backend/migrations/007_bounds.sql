-- How much an account can hold: more than a person ever does, and no more.

-- The figures of a client (maximumDeviceDay in CountLimits.h; the tests compare the two): a device that claims
-- more is believed by no client either. Rows from before the bound stay as they are.
ALTER TABLE public.device_day_counts DROP CONSTRAINT device_day_counts_count_check,
    ADD CONSTRAINT device_day_counts_count_check CHECK (count BETWEEN 0 AND 10000000) NOT VALID;
ALTER TABLE public.device_hour_counts DROP CONSTRAINT device_hour_counts_count_check,
    ADD CONSTRAINT device_hour_counts_count_check CHECK (count BETWEEN 0 AND 10000000) NOT VALID;
ALTER TABLE public.device_app_hour_counts DROP CONSTRAINT device_app_hour_counts_count_check,
    ADD CONSTRAINT device_app_hour_counts_count_check CHECK (count BETWEEN 0 AND 10000000) NOT VALID;

-- The rows of an account: of each of its days, and under -infinity the days themselves, or the rows of a table
-- without days. Counted when a row is new, because counting the rows themselves would cost most where there are
-- the most of them.
CREATE TABLE fernhollow.account_rows (
    rows integer NOT NULL,
    day date NOT NULL,
    customer_email text COLLATE "C" NOT NULL,
    of_table text COLLATE "C" NOT NULL,
    PRIMARY KEY (customer_email, day, of_table)
);

CREATE FUNCTION fernhollow.count_row(email text, row_day date, counted_table text, most integer) RETURNS integer
    LANGUAGE plpgsql
    SET search_path = pg_catalog, pg_temp
AS $$
DECLARE
    counted integer;
BEGIN
    INSERT INTO fernhollow.account_rows AS known (customer_email, day, of_table, rows)
    VALUES (email, row_day, counted_table, 1)
    ON CONFLICT (customer_email, day, of_table) DO UPDATE SET rows = known.rows + 1
    RETURNING known.rows INTO counted;
    IF counted > most THEN
        RAISE check_violation USING
            MESSAGE = format('the account has too many rows in %s', counted_table),
            DETAIL = format('It can have %s %s.', most, CASE row_day WHEN '-infinity' THEN 'in all' ELSE 'a day' END);
    END IF;
    RETURN counted;
END
$$;

-- The arguments: the most rows of an account, or with a second one, the most rows of a day and the most days.
CREATE FUNCTION fernhollow.bound_account() RETURNS trigger
    LANGUAGE plpgsql
    SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
AS $$
BEGIN
    IF TG_NARGS = 1 THEN
        PERFORM fernhollow.count_row(NEW.customer_email, '-infinity', TG_TABLE_NAME, TG_ARGV[0]::integer);
    ELSIF fernhollow.count_row(NEW.customer_email, NEW.day, TG_TABLE_NAME, TG_ARGV[0]::integer) = 1 THEN
        PERFORM fernhollow.count_row(NEW.customer_email, '-infinity', TG_TABLE_NAME, TG_ARGV[1]::integer);
    END IF;
    RETURN NULL;
END
$$;
REVOKE ALL ON FUNCTION fernhollow.count_row(text, date, text, integer), fernhollow.bound_account() FROM PUBLIC;

INSERT INTO fernhollow.account_rows (customer_email, day, of_table, rows)
SELECT customer_email, day, 'device_day_counts', count(*) FROM public.device_day_counts GROUP BY 1, 2
UNION ALL
SELECT customer_email, day, 'device_hour_counts', count(*) FROM public.device_hour_counts GROUP BY 1, 2
UNION ALL
SELECT customer_email, day, 'device_app_hour_counts', count(*) FROM public.device_app_hour_counts GROUP BY 1, 2
UNION ALL
SELECT customer_email, '-infinity', 'device_app_registry', count(*) FROM public.device_app_registry GROUP BY 1
UNION ALL
SELECT customer_email, '-infinity', 'devices', count(*) FROM public.devices GROUP BY 1;
INSERT INTO fernhollow.account_rows (customer_email, day, of_table, rows)
SELECT customer_email, '-infinity', of_table, count(*) FROM fernhollow.account_rows WHERE day > '-infinity' GROUP BY 1, 3;

-- A hundred devices, all hours of each, and a hundred years of days. AFTER INSERT, because a row that an upsert
-- replaces is not new.
CREATE TRIGGER bound_account AFTER INSERT ON public.device_day_counts
    FOR EACH ROW EXECUTE FUNCTION fernhollow.bound_account(100, 40000);
CREATE TRIGGER bound_account AFTER INSERT ON public.device_hour_counts
    FOR EACH ROW EXECUTE FUNCTION fernhollow.bound_account(2400, 40000);
CREATE TRIGGER bound_account AFTER INSERT ON public.device_app_hour_counts
    FOR EACH ROW EXECUTE FUNCTION fernhollow.bound_account(10000, 40000);
CREATE TRIGGER bound_account AFTER INSERT ON public.device_app_registry
    FOR EACH ROW EXECUTE FUNCTION fernhollow.bound_account(5000);
CREATE TRIGGER bound_account AFTER INSERT ON public.devices
    FOR EACH ROW EXECUTE FUNCTION fernhollow.bound_account(100);
